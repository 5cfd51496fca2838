#include "core/viewer/SaveChoices.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace tarnby::viewer {

namespace {

struct FormatDepths {
    const char *extension;
    QList<int> depths;
};

// Each writer, tried at every depth with a colour picture and read back: the
// depths listed here come back as they were written. Depths a writer does not
// keep (a 16-bit BMP is written with 24) are not offered.
const std::array<FormatDepths, 25> &depthTable()
{
    static const std::array<FormatDepths, 25> table{{
        {"JPG", {8, 24}}, // 8: grey
        {"JPE", {8, 24}},
        {"TIFF", {1, 8, 24, 32}},
        {"TIF", {1, 8, 24, 32}},
        {"MPT", {1, 8, 24, 32}},
        {"BMP", {1, 4, 8, 24}},
        {"ICO", {32}},
        {"CUR", {32}},
        {"PCX", {8, 24, 32}},
        {"DCX", {8, 24, 32}},
        {"PCD", {24}},
        {"XPM", {1, 4, 8}},
        {"PBM", {1, 8, 24, 32}},
        {"CUT", {8}},
        {"PSD", {8, 24, 32}},
        {"PNG", {1, 8, 24, 32}},
        {"TGA", {4, 8, 24, 32}},
        {"EPS", {24}},
        {"JBG", {1}},
        {"RAS", {4, 8, 24, 32}},
        {"PCT", {24}},
        {"XWD", {4, 8, 24}},
        {"SGI", {24, 32}},
        {"MAC", {1}},
        {"MSP", {1}},
    }};
    return table;
}

// The luminance table that the JPEG standard suggests, which encoders scale
// by the quality; only its sum matters here, so its order does not.
constexpr std::array<int, 64> StandardLuminance{
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,  14, 13, 16, 24, 40, 57,
    69, 56, 14, 17, 22,  29,  51,  87,  80, 62, 18, 22, 37,  56,  68,  109, 103, 77, 24, 35, 55, 64,
    81, 104, 113, 92, 49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

// The sum of the standard table as an encoder writes it at quality: scaled by
// 5000 / quality below 50 and by 200 - 2 * quality from 50 up, each entry
// rounded and kept between 1 and 255.
long tableSumAt(int quality)
{
    const long scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    long sum = 0;
    for (int entry : StandardLuminance)
        sum += std::clamp((entry * scale + 50) / 100, 1L, 255L);
    return sum;
}

// The quality whose table comes nearest to the one found; comparing whole
// tables (not the scale alone) keeps the clamped low and high qualities right.
int qualityForTableSum(long sum)
{
    int best = 1;
    long bestDistance = std::abs(tableSumAt(1) - sum);
    for (int q = 2; q <= 100; ++q) {
        const long distance = std::abs(tableSumAt(q) - sum);
        if (distance < bestDistance) {
            best = q;
            bestDistance = distance;
        }
    }
    return best;
}

} // namespace

QList<int> writableDepths(const QString &extension)
{
    const QByteArray upper = extension.toUpper().toLatin1();
    for (const FormatDepths &f : depthTable()) {
        if (upper == f.extension)
            return f.depths;
    }
    return {};
}

bool takesQuality(const QString &extension)
{
    const QString upper = extension.toUpper();
    return upper == QLatin1String("JPG") || upper == QLatin1String("JPE");
}

int presetDepth(const QList<int> &depths, int pictureBits)
{
    if (depths.isEmpty())
        return 0;
    if (depths.contains(pictureBits))
        return pictureBits;
    for (int d : depths) {
        if (d > pictureBits)
            return d;
    }
    return depths.constLast();
}

int jpegQuality(const QByteArray &head)
{
    const auto byte = [&head](qsizetype i) { return int(quint8(head.at(i))); };
    if (head.size() < 4 || byte(0) != 0xFF || byte(1) != 0xD8)
        return 0;
    qsizetype at = 2;
    while (at + 4 <= head.size()) {
        if (byte(at) != 0xFF)
            return 0;
        const int marker = byte(at + 1);
        if (marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) // image data or end: no table came
            return 0;
        const int length = (byte(at + 2) << 8) | byte(at + 3);
        if (length < 2 || at + 2 + length > head.size())
            return 0;
        if (marker == 0xDB) {
            // Tables one after another: precision and id, then 64 values of
            // one byte (precision 0) or two.
            qsizetype t = at + 4;
            const qsizetype end = at + 2 + length;
            while (t < end) {
                const int precision = byte(t) >> 4;
                const int id = byte(t) & 0x0F;
                const int size = precision == 0 ? 64 : 128;
                if (t + 1 + size > end)
                    return 0;
                if (id == 0) {
                    long sum = 0;
                    for (int i = 0; i < 64; ++i)
                        sum += precision == 0 ? byte(t + 1 + i) : (byte(t + 1 + 2 * i) << 8) | byte(t + 2 + 2 * i);
                    return qualityForTableSum(sum);
                }
                t += 1 + size;
            }
        }
        at += 2 + length;
    }
    return 0;
}

int jpegQualityOfFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return jpegQuality(file.read(64 * 1024));
}

PictureSaveChoices saveChoicesFor(const QString &extension, int pictureBits, const QString &sourcePath)
{
    PictureSaveChoices choices;
    choices.depths = writableDepths(extension);
    choices.depth = presetDepth(choices.depths, pictureBits);
    choices.hasQuality = takesQuality(extension);
    if (choices.hasQuality) {
        const int own = sourcePath.isEmpty() ? 0 : jpegQualityOfFile(sourcePath);
        choices.quality = own > 0 ? own : DefaultJpegQuality;
    }
    return choices;
}

} // namespace tarnby::viewer
