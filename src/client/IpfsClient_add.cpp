// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "AddBody.h"
#include "AddUpload.h"
#include "AddWalk.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

const auto addPath = u"/add"_s;

QString yesOrNo(bool yes)
{
    return yes ? u"true"_s : u"false"_s;
}

QUrlQuery addQuery(const AddOptions& options)
{
    return rpcQuery({{u"recursive"_s, u"true"_s},
                     {u"wrap-with-directory"_s, yesOrNo(options.wrapWithDirectory)},
                     {u"pin"_s, yesOrNo(options.pin)},
                     {u"only-hash"_s, yesOrNo(options.onlyHash)},
                     {u"cid-version"_s, QString::number(options.cidVersion)}});
}

std::shared_ptr<AddUpload> uploadOf(const QNetworkReply* reply)
{
    return reply ? reply->property(ReplyProperty::addUpload).value<std::shared_ptr<AddUpload>>() : nullptr;
}

} // namespace

void IpfsClient::addLocalPaths(const QList<LocalPathSelection>& selections, const AddOptions& options)
{
    if (selections.isEmpty()) {
        emit addFailed(tr("Nothing selected to add."));
        return;
    }
    const QNetworkRequest request = transport->announce(endpoint, addPath, addQuery(options));
    auto body = std::make_unique<AddBody>();
    AddWalk walk(*body);
    for (const LocalPathSelection& selection : selections)
        walk.add(selection);
    if (!body->hasParts()) {
        emit addFailed(tr("No readable files or folders found in the selected input."));
        return;
    }
    body->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    const QByteArray contentType = body->contentType();
    QNetworkReply* reply = transport->upload(request, contentType, body.release());
    const auto upload = std::make_shared<AddUpload>(options, walk);
    reply->setProperty(ReplyProperty::addUpload, QVariant::fromValue(upload));
    connect(reply, &QNetworkReply::uploadProgress, this, &IpfsClient::addBytesSent);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { onAddReplyReadyRead(reply); });
    handOver(reply, addPath, &IpfsClient::onAddReplyFinished);
}

void IpfsClient::onAddReplyReadyRead(QNetworkReply* reply)
{
    const std::shared_ptr<AddUpload> upload = uploadOf(reply);
    if (!upload)
        return;
    upload->take(reply->readAll());
    announceEntries(reply, *upload);
}

/// A listener may run an event loop, so this is called again from within; the outermost call announces all, in order.
void IpfsClient::announceEntries(QNetworkReply* reply, AddUpload& upload)
{
    if (upload.isReporting)
        return;
    upload.isReporting = true;
    const QPointer<IpfsClient> self = this;
    while (self && upload.reported < upload.addEntries.size()) {
        const QString name = upload.addEntries.at(upload.reported).name;
        ++upload.reported;
        emit addProgress(name, upload.reported, upload.addTotalFiles);
    }
    upload.isReporting = false;
    if (self && upload.isFinished)
        finishAdd(reply, upload);
}

void IpfsClient::onAddReplyFinished(QNetworkReply* reply)
{
    const std::shared_ptr<AddUpload> upload = uploadOf(reply);
    if (!upload)
        return;
    upload->take(reply->readAll());
    upload->isFinished = true;
    announceEntries(reply, *upload);
}

void IpfsClient::finishAdd(QNetworkReply* reply, AddUpload& upload)
{
    upload.takeLastLine();
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError)
        emit addFailed(tr("Add failed: %1").arg(reply->errorString()));
    else if (!upload.addStreamErrors.isEmpty())
        emit addFailed(tr("Add failed: %1").arg(upload.addStreamErrors));
    else
        completeAdd(upload);
}

void IpfsClient::completeAdd(const AddUpload& upload)
{
    if (upload.isShort() || upload.foldersWithinThemselves > 0)
        emit addShortfall(upload.addTotalFiles, upload.filesReported(), upload.filesSkipped,
                          upload.foldersWithinThemselves, upload.rootLineMissing());
    emit addCompleted(upload.rootCid(), upload.addEntries);
}
