#include "ConnectionGroup.h"

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
#include <QHttp1Configuration>
#endif

using namespace Qt::StringLiterals;

// A network manager opens six connections to a host and lets all other requests wait. From Qt 6.5 on the number can be
// set. Before that, requests that name different peers to verify get connections of their own, six for each name; over
// plain http the name has no other effect. The name also keeps the groups apart, in every version.

namespace {

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr bool widthCanBeSet = true;
#else
constexpr bool widthCanBeSet = false;
#endif
constexpr int connectionsPerName = 6;

} // namespace

int ConnectionGroup::lanes() const
{
    return widthCanBeSet ? 1 : (width + connectionsPerName - 1) / connectionsPerName;
}

void useConnectionGroup(QNetworkRequest& request, const ConnectionGroup& group, int lane)
{
    if (group.name.isEmpty())
        return;
    request.setPeerVerifyName(u"%1-%2"_s.arg(group.name, QString::number(lane)));
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    QHttp1Configuration configuration;
    configuration.setNumberOfConnectionsPerHost(group.width);
    request.setHttp1Configuration(configuration);
#endif
}
