#include "core/platform/imaging/codecs/EpsHandler.h"

#include <QIODevice>
#include <QtMath>

namespace tarnby::imaging::codecs {

namespace {

constexpr int HexBytesPerLine = 36; // 72 characters a line, well under DSC's 255

void appendHex(QByteArray &out, const uchar *data, int length, int &column)
{
    static const char digits[] = "0123456789ABCDEF";
    for (int i = 0; i < length; ++i) {
        out.append(digits[data[i] >> 4]).append(digits[data[i] & 0xF]);
        if (++column == HexBytesPerLine) {
            out.append('\n');
            column = 0;
        }
    }
}

} // namespace

bool EpsHandler::write(const QImage &source)
{
    clearError();
    if (source.isNull())
        return fail(QStringLiteral("There is no picture to save"));

    const int width = source.width();
    const int height = source.height();
    const bool oneBit = source.depth() == 1;
    const bool grey = oneBit || source.isGrayscale();
    QImage converted;
    if (oneBit)
        converted = toWhiteOnBits(source);
    else if (grey)
        converted = source.convertToFormat(QImage::Format_Grayscale8);
    else
        converted = source.convertToFormat(QImage::Format_RGB888);
    if (converted.isNull())
        return fail(QStringLiteral("Not enough memory to convert the picture"));

    // Points are 1/72 inch; a picture without a resolution shows one pixel a point.
    const auto points = [](int pixels, int dotsPerMeter) {
        const double dpi = dotsPerMeter > 0 ? dotsPerMeter * 0.0254 : 72.0;
        return pixels * 72.0 / dpi;
    };
    const double boxWidth = points(width, source.dotsPerMeterX());
    const double boxHeight = points(height, source.dotsPerMeterY());

    QByteArray out;
    out.reserve(qsizetype(converted.sizeInBytes()) * 2 + 1024);
    out.append("%!PS-Adobe-3.0 EPSF-3.0\n");
    out.append("%%Creator: Tarnby 3.0\n");
    out.append("%%BoundingBox: 0 0 " + QByteArray::number(qCeil(boxWidth)) + ' ' + QByteArray::number(qCeil(boxHeight))
               + '\n');
    out.append("%%HiResBoundingBox: 0 0 " + QByteArray::number(boxWidth, 'f', 3) + ' '
               + QByteArray::number(boxHeight, 'f', 3) + '\n');
    out.append("%%LanguageLevel: 2\n%%Pages: 1\n%%EndComments\n");
    // The raster the file carries, in the form Photoshop reads and writes:
    // columns, rows, bits per channel, channels, no extra channels, bytes a
    // row per channel (1: channels interleaved), hexadecimal data, and the
    // text after which the data starts. A reader that renders the page
    // learns from it how many pixels the box holds.
    const int rowBytes = oneBit ? (width + 7) / 8 : width * (grey ? 1 : 3);
    out.append("%ImageData: " + QByteArray::number(width) + ' ' + QByteArray::number(height) + (oneBit ? " 1" : " 8")
               + (grey ? " 1 0 " : " 3 0 ") + QByteArray::number(grey ? rowBytes : 1) + " 2 \"image\"\n");
    out.append("%%Page: 1 1\n");
    out.append("gsave\n");
    out.append(QByteArray::number(boxWidth, 'f', 3) + ' ' + QByteArray::number(boxHeight, 'f', 3) + " scale\n");
    out.append(grey ? "/DeviceGray setcolorspace\n" : "/DeviceRGB setcolorspace\n");
    out.append("<<\n  /ImageType 1\n  /Width " + QByteArray::number(width) + "\n  /Height " + QByteArray::number(height)
               + "\n  /BitsPerComponent " + (oneBit ? "1" : "8") + "\n  /Decode " + (grey ? "[0 1]" : "[0 1 0 1 0 1]")
               + "\n  /ImageMatrix [" + QByteArray::number(width) + " 0 0 -" + QByteArray::number(height) + " 0 "
               + QByteArray::number(height) + "]\n  /DataSource currentfile /ASCIIHexDecode filter\n>> image\n");
    int column = 0;
    for (int y = 0; y < height; ++y)
        appendHex(out, converted.constScanLine(y), rowBytes, column);
    if (column)
        out.append('\n');
    out.append(">\ngrestore\nshowpage\n%%Trailer\n%%EOF\n");
    if (device()->write(out) != out.size())
        return fail(QStringLiteral("The PostScript file could not be written"));
    return true;
}

} // namespace tarnby::imaging::codecs
