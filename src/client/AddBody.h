// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <memory>
#include <vector>

class QFile;

/// The body of an upload: the bytes that a QHttpMultiPart of type form data gives for the same parts, made while they
/// are read. Reading costs what is read, however many parts there are, and memory grows with their number only.
///
/// All files are opened when they are appended and stay open until they have been read. Once half of the descriptors
/// that the program may have are in use, a further one is opened to see that it can be read, and again when its turn
/// comes. The size of the whole is fixed by then: a file that is gone, shorter or longer when its bytes are due ends
/// the reading, and errorString() names it.
///
/// Append all parts, then open, then read once from the start to the end; it can't be set to another place.
class AddBody : public QIODevice
{
    Q_OBJECT

public:
    explicit AddBody(const QByteArray& newBoundary = freshBoundary(), QObject* parent = nullptr);
    ~AddBody() override;

    /// `name` is the part's path in the upload, its folders separated by slashes.
    void appendDirectory(const QString& name);
    /// False, and nothing is appended, if the file at `path`, which is absolute, can't be read.
    bool appendFile(const QString& path, const QString& name);
    bool hasParts() const { return !parts.empty(); }

    /// The value of the request's header "Content-Type".
    QByteArray contentType() const;
    qint64 size() const override { return total; }
    bool seek(qint64 pos) override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    struct Part
    {
        QString name {};
        QString path {}; ///< empty for a directory
        qint64 size = 0;
        std::unique_ptr<QFile> file {}; ///< null for a directory, and where none is kept open
    };

    static QByteArray freshBoundary();
    QByteArray headOf(const Part& part) const;
    QByteArray end() const;
    void append(Part part);
    bool advance();
    bool beginFile(Part& part);
    bool endFile(Part& part);
    bool failAsChanged(const Part& part);
    bool failAsUnreadable(const Part& part);
    bool fail(const QString& reason);
    qint64 readFile(char* data, qint64 maxSize);

    QByteArray boundary;
    std::vector<Part> parts;
    qint64 total; ///< bytes of the whole body
    qint64 given = 0;

    size_t next = 0; ///< the part that is due after the current one; one beyond the last is the end
    QByteArray text; ///< what comes before the current part's file
    qsizetype textGiven = 0;
    qint64 fileLeft = 0; ///< bytes of the current part's file
    bool failed = false;
};
