#include "core/platform/imaging/VectorRoutes.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <emf2svg.h>

#include <QRegularExpression>

#include <cmath>
#include <cstdlib>
#include <dlfcn.h>

namespace tarnby::imaging::vector {

namespace {

using Emf2Svg = int (*)(char *, size_t, char **, size_t *, generatorOptions *);

// libemf2svg brings libuemf, which exports WMF function names (wmf_free, ...)
// that libwmf, behind ImageMagick's WMF coder, exports too. Linked normally,
// libwmf's calls land in libuemf and crash; loaded with RTLD_LOCAL its symbols
// stay out of the global scope.
Emf2Svg converter()
{
    static const Emf2Svg fn = [] {
        void *library = dlopen("libemf2svg.so.1", RTLD_NOW | RTLD_LOCAL);
        return library ? reinterpret_cast<Emf2Svg>(dlsym(library, "emf2svg")) : nullptr;
    }();
    return fn;
}

// What the header says about the drawing's place: rclBounds in device
// pixels, rclFrame in hundredths of a millimetre, and the reference device's
// size in pixels and millimetres (or micrometres, where the header is long
// enough to carry them).
struct EmfHeader {
    QRect bounds;  // left, top, right, bottom as stored
    QRectF frame;  // in device pixels; empty when the header gives no usable frame

    static EmfHeader read(const QByteArray &data)
    {
        const auto i32 = [&](int at) { return qFromLittleEndian<qint32>(data.constData() + at); };
        EmfHeader h;
        h.bounds.setCoords(i32(8), i32(12), i32(16), i32(20));
        double millimetresX = i32(80), millimetresY = i32(84);
        const quint32 headerSize = qFromLittleEndian<quint32>(data.constData() + 4);
        if (headerSize >= 108 && data.size() >= 108 && i32(100) > 0 && i32(104) > 0) {
            millimetresX = i32(100) / 1000.0;
            millimetresY = i32(104) / 1000.0;
        }
        const double deviceX = i32(72), deviceY = i32(76);
        if (deviceX > 0 && deviceY > 0 && millimetresX > 0 && millimetresY > 0) {
            const double perHundredthX = deviceX / millimetresX / 100, perHundredthY = deviceY / millimetresY / 100;
            const QRectF frame(QPointF(i32(24) * perHundredthX, i32(28) * perHundredthY),
                               QPointF(i32(32) * perHundredthX, i32(36) * perHundredthY));
            if (frame.width() > 0 && frame.height() > 0 && std::isfinite(frame.width()) && std::isfinite(frame.height()))
                h.frame = frame;
        }
        return h;
    }
    qint64 boundsWidth() const { return qint64(bounds.right()) - bounds.left(); }
    qint64 boundsHeight() const { return qint64(bounds.bottom()) - bounds.top(); }
};

} // namespace

bool emfAvailable()
{
    return converter() != nullptr;
}

detail::Decoded readEmf(const QByteArray &data)
{
    // The header's record type (1) and " EMF" signature, and a plausible header
    // size, before the converter sees the bytes.
    if (data.size() < 88 || qFromLittleEndian<quint32>(data.constData()) != 1 || data.mid(40, 4) != " EMF")
        return detail::failure(QStringLiteral("The file is not an Enhanced Metafile."));

    generatorOptions options{};
    options.nameSpace = nullptr;
    options.verbose = false;
    options.emfplus = true;
    options.svgDelimiter = true;
    char *svg = nullptr;
    size_t svgLength = 0;
    // emf2svg takes a mutable buffer; hand it a copy of our own.
    QByteArray copy = data;
    const Emf2Svg emf2svg = converter();
    if (!emf2svg)
        return detail::failure(QStringLiteral("The EMF converter (libemf2svg) is not installed."));
    const int ok = emf2svg(copy.data(), size_t(copy.size()), &svg, &svgLength, &options);
    const QByteArray svgData = svg ? QByteArray(svg, qsizetype(svgLength)) : QByteArray();
    std::free(svg);
    if (!ok || svgData.isEmpty())
        return detail::failure(QStringLiteral("The metafile could not be converted."));

    QByteArray drawable = svgData;
    // Text needs the font database of a GUI application; without one (the
    // command-line tool) the drawing is shown without its text rather than
    // aborting in the font code.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        static const QRegularExpression textElement(QStringLiteral("<(svg:)?text\\b.*?</(svg:)?text>"),
                                                    QRegularExpression::DotMatchesEverythingOption);
        drawable = QString::fromUtf8(svgData).remove(textElement).toUtf8();
    }
    QSvgRenderer renderer(drawable);
    if (!renderer.isValid())
        return detail::failure(QStringLiteral("The metafile's drawing could not be read."));
    // The converter lays the drawing out from the header's bounds: its SVG
    // units are device pixels less the bounds' top left corner, times the
    // ratio of its declared size to the bounds' size. A metafile is shown the
    // way it is played into a rectangle: its frame, not the extent of what it
    // draws, is stretched over the picture, and the picture takes the size of
    // the bounds (the frame's size in pixels where the bounds are unusable).
    const EmfHeader header = EmfHeader::read(data);
    const QSizeF declared = renderer.defaultSize();
    QSizeF size = declared;
    if (header.boundsWidth() > 0 && header.boundsHeight() > 0)
        size = QSizeF(double(header.boundsWidth()), double(header.boundsHeight()));
    else if (!header.frame.isEmpty())
        size = header.frame.size();
    if (!header.frame.isEmpty() && !declared.isEmpty() && header.boundsWidth() > 0 && header.boundsHeight() > 0) {
        const double sx = declared.width() / double(header.boundsWidth());
        const double sy = declared.height() / double(header.boundsHeight());
        renderer.setViewBox(QRectF((header.frame.left() - header.bounds.left()) * sx,
                                   (header.frame.top() - header.bounds.top()) * sy, header.frame.width() * sx,
                                   header.frame.height() * sy));
    }
    if (size.isEmpty())
        size = renderer.viewBoxF().size();
    if (size.isEmpty() || !std::isfinite(size.width()) || !std::isfinite(size.height()))
        return detail::failure(QStringLiteral("The metafile has no drawing size."));
    const double longer = qMax(size.width(), size.height());
    if (longer > MaxVectorSide)
        size *= MaxVectorSide / longer;
    const QSize pixels(qMax(1, qRound(size.width())), qMax(1, qRound(size.height())));

    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return detail::failure(detail::tooLargeMessage(pixels.width(), pixels.height()));
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(pixels)));
    painter.end();

    detail::Decoded decoded;
    decoded.frames.append({image.convertToFormat(QImage::Format_RGB32), 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
