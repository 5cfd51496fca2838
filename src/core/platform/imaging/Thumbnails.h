#pragma once

#include <QImage>
#include <QString>

namespace tarnby::imaging {

// A thumbnail of the picture at path that fits in size x size pixels, by the
// fastest road the format allows. Thread-safe. Returns a null image and sets
// *errorString when the file cannot be read.
QImage thumbnail(const QString &path, int size, QString *errorString = nullptr);

} // namespace tarnby::imaging
