#include "VectorRoutes.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <emf2svg.h>

#include <QRegularExpression>

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
    QSizeF size = renderer.defaultSize();
    if (size.isEmpty())
        size = renderer.viewBoxF().size();
    if (size.isEmpty())
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
    renderer.render(&painter);
    painter.end();

    detail::Decoded decoded;
    decoded.frames.append({image.convertToFormat(QImage::Format_RGB32), 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
