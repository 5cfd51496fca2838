#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>

// Drives our own codecs the way the picture layer does: read every frame
// through the handler, or write one picture, all in memory.
namespace codectest {

struct Decoded {
    QList<QImage> frames;
    QList<int> delaysMs;
    QString error; // empty on success
    bool ok() const { return error.isEmpty() && !frames.isEmpty(); }
};

// Reads all frames of data with the handler for format.
Decoded decode(const QByteArray &format, const QByteArray &data);
Decoded decodeFile(const QByteArray &format, const QString &path);

// Writes image with the handler for format; sets error and returns an empty
// array on failure.
QByteArray encode(const QByteArray &format, const QImage &image, QString *error = nullptr);

// Largest difference of any channel between two pictures of the same size,
// compared as ARGB; -1 when the sizes differ.
int maxChannelDifference(const QImage &a, const QImage &b);

} // namespace codectest
