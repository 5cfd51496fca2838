#include "core/platform/imaging/VectorRoutes.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImageReader>
#include <QRegularExpression>
#include <QSize>
#include <QTemporaryDir>
#include <QThread>
#include <QtEndian>

#include <ghostscript/iapi.h>
#include <ghostscript/ierrors.h>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define TARNBY_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARNBY_ADDRESS_SANITIZER 1
#endif
#endif

namespace tarnby::imaging::vector {

namespace {

// The PostScript part of the file: a DOS binary EPS carries it at an offset
// given in its 30-byte header, beside a TIFF or WMF preview.
QByteArray postScriptPart(const QByteArray &data)
{
    if (data.startsWith("\xC5\xD0\xD3\xC6") && data.size() >= 30) {
        const quint32 offset = qFromLittleEndian<quint32>(data.constData() + 4);
        const quint32 length = qFromLittleEndian<quint32>(data.constData() + 8);
        if (offset >= quint32(data.size()) || length > quint32(data.size()) - offset)
            return {};
        return data.mid(offset, length);
    }
    return data;
}

struct BoundingBox {
    double x1 = 0, y1 = 0, x2 = 612, y2 = 792; // a US Letter page when the file names none
};

// The comments the reader uses, from the first 64 KiB: the bounding box of
// the header, and the raster Photoshop's %ImageData states (after the header,
// before the image).
struct Header {
    BoundingBox box;
    QSize raster; // %ImageData's columns and rows: the pixels of an image-only file; empty if unstated
};

Header readHeader(const QByteArray &ps)
{
    // The high-resolution box where the file gives one: its edges need not
    // fall on whole points, and a raster's resolution follows from them.
    static const QRegularExpression boxes(QStringLiteral(
        R"(^%%(HiRes)?BoundingBox:[ \t]*(-?[0-9.]+)[ \t]+(-?[0-9.]+)[ \t]+(-?[0-9.]+)[ \t]+(-?[0-9.]+))"),
        QRegularExpression::MultilineOption);
    static const QRegularExpression imageData(QStringLiteral(R"(^%%?ImageData:[ \t]*([0-9]{1,9})[ \t]+([0-9]{1,9}))"),
                                              QRegularExpression::MultilineOption);
    const QString text = QString::fromLatin1(ps.left(64 * 1024));
    // Comments of documents the file embeds (a placed picture) are not the
    // file's own.
    const qsizetype embedded = text.indexOf(QLatin1String("\n%%BeginDocument"));
    const QString own = embedded < 0 ? text : text.left(embedded);
    const qsizetype endComments = own.indexOf(QLatin1String("\n%%EndComments"));
    const QString comments = endComments < 0 ? own : own.left(endComments);
    Header header;
    bool seen[2] = {false, false}; // the first box of each kind counts
    for (QRegularExpressionMatchIterator it = boxes.globalMatch(comments); it.hasNext() && !seen[1];) {
        const QRegularExpressionMatch m = it.next();
        const bool hiRes = !m.captured(1).isEmpty();
        if (seen[hiRes])
            continue;
        seen[hiRes] = true;
        const BoundingBox b{m.captured(2).toDouble(), m.captured(3).toDouble(), m.captured(4).toDouble(),
                            m.captured(5).toDouble()};
        if (b.x2 > b.x1 && b.y2 > b.y1)
            header.box = b;
    }
    const QRegularExpressionMatch m = imageData.match(own);
    if (m.hasMatch() && m.captured(1).toInt() > 0 && m.captured(2).toInt() > 0)
        header.raster = QSize(m.captured(1).toInt(), m.captured(2).toInt());
    return header;
}

// The child's message file; set only in the child process.
int messageFd = -1;

int toMessages(void *, const char *text, int len)
{
    if (messageFd >= 0 && len > 0)
        (void)!write(messageFd, text, size_t(len));
    return len;
}

int noInput(void *, char *, int)
{
    return 0;
}

// Runs in the child process only: renders input to output and exits.
// resolution: Ghostscript's -r argument.
[[noreturn]] void renderInChild(const QByteArray &input, const QByteArray &output, const QByteArray &messages,
                               int width, int height, const QByteArray &resolution)
{
    // A crash in the interpreter ends this child quietly: the parent's crash
    // handlers (a sanitizer's, a fuzzer's) are not the child's business.
    for (int s : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGXCPU})
        signal(s, SIG_DFL);
    messageFd = open(messages.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
#if !defined(TARNBY_ADDRESS_SANITIZER)
    // The address space bound stops a PostScript program from eating memory;
    // sanitizer builds reserve huge shadow mappings and cannot take it.
    const rlim_t limit = rlim_t(1) << 31;
    const rlimit as{limit, limit};
    setrlimit(RLIMIT_AS, &as);
#endif
    const rlimit cpu{EpsTimeLimitSeconds, EpsTimeLimitSeconds + 1};
    setrlimit(RLIMIT_CPU, &cpu);

    void *instance = nullptr;
    if (gsapi_new_instance(&instance, nullptr) < 0)
        _exit(3);
    gsapi_set_stdio(instance, noInput, toMessages, toMessages);
    gsapi_set_arg_encoding(instance, GS_ARG_ENCODING_UTF8);
    // -dEPSFitPage scales the drawing to the page of -g pixels, which
    // carries the bound.
    const QByteArray size = "-g" + QByteArray::number(width) + "x" + QByteArray::number(height);
    const QByteArray outputArg = "-sOutputFile=" + output;
    const char *argv[] = {"tarnby",       "-dSAFER",          "-dBATCH",          "-dNOPAUSE",
                          "-dQUIET",      "-dNOINTERPOLATE",  "-sDEVICE=png16m",  "-dTextAlphaBits=4",
                          "-dGraphicsAlphaBits=4", "-dEPSFitPage", "-dFIXEDMEDIA", "-dFirstPage=1",
                          "-dLastPage=1", resolution.constData(), size.constData(), outputArg.constData(),
                          "-f",           input.constData()};
    const int argc = int(sizeof(argv) / sizeof(argv[0]));
    int code = gsapi_init_with_args(instance, argc, const_cast<char **>(argv));
    const int exitCode = gsapi_exit(instance);
    gsapi_delete_instance(instance);
    if (code == gs_error_Quit)
        code = 0;
    _exit(code == 0 && exitCode == 0 ? 0 : 4);
}

} // namespace

detail::Decoded readEps(const QByteArray &data)
{
    const QByteArray ps = postScriptPart(data);
    if (!ps.startsWith("%!"))
        return detail::failure(QStringLiteral("The file is not Encapsulated PostScript."));

    const Header header = readHeader(ps);
    const double widthPt = header.box.x2 - header.box.x1;
    const double heightPt = header.box.y2 - header.box.y1;
    // A file that states its raster (an image saved as EPS) is drawn with as
    // many pixels as it holds; a drawing at 72 dots per inch, one pixel per
    // point. Either is made smaller where it would exceed the bitmap bound.
    double width = widthPt;
    double height = heightPt;
    if (!header.raster.isEmpty()) {
        width = header.raster.width();
        height = header.raster.height();
    }
    const double longer = qMax(width, height);
    if (longer > MaxVectorSide) {
        width = width * MaxVectorSide / longer;
        height = height * MaxVectorSide / longer;
    }
    const int pixelsWide = qMax(1, qRound(width));
    const int pixelsHigh = qMax(1, qRound(height));
    const double dpiX = pixelsWide * 72.0 / widthPt;
    const double dpiY = pixelsHigh * 72.0 / heightPt;
    // The page is the -g pixels at the -r resolution, and the drawing is
    // scaled to fit it, the same in both directions. The device works at 72
    // dots per inch (far lower ones fail in its halftone set-up), except for
    // a raster whose pixels are not square (a fax at 204 x 98): its page is
    // its box at its own resolution across and down, so that the fit is
    // exact.
    QByteArray resolution = "-r72";
    if (qAbs(dpiX - dpiY) > 0.01 * qMax(dpiX, dpiY) && qMin(dpiX, dpiY) >= 24)
        resolution = "-r" + QByteArray::number(dpiX, 'f', 3) + 'x' + QByteArray::number(dpiY, 'f', 3);

    QTemporaryDir dir;
    if (!dir.isValid())
        return detail::failure(QStringLiteral("No temporary folder for rendering PostScript: %1").arg(dir.errorString()));
    const QString inputPath = dir.filePath(QStringLiteral("in.eps"));
    const QString outputPath = dir.filePath(QStringLiteral("out.png"));
    {
        QFile in(inputPath);
        if (!in.open(QIODevice::WriteOnly) || in.write(ps) != ps.size())
            return detail::failure(QStringLiteral("Cannot write a temporary file for rendering PostScript."));
    }

    // Ghostscript runs in a child process: a hostile program that loops or
    // crashes takes only the child with it, and the wait below is bounded.
    const QByteArray input = QFile::encodeName(inputPath);
    const QByteArray output = QFile::encodeName(outputPath);
    const QByteArray messages = QFile::encodeName(dir.filePath(QStringLiteral("messages.txt")));
    const pid_t pid = fork();
    if (pid < 0)
        return detail::failure(QStringLiteral("Cannot start the PostScript renderer."));
    if (pid == 0)
        renderInChild(input, output, messages, pixelsWide, pixelsHigh, resolution);

    QElapsedTimer timer;
    timer.start();
    int status = 0;
    for (;;) {
        const pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid)
            break;
        if (done < 0)
            return detail::failure(QStringLiteral("The PostScript renderer was lost."));
        if (timer.elapsed() > qint64(EpsTimeLimitSeconds) * 1000) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return detail::failure(QStringLiteral("Rendering the PostScript took too long (over %1 seconds).")
                                       .arg(EpsTimeLimitSeconds));
        }
        QThread::msleep(5);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        // Ghostscript's own words, first line: "Error: /invalidfileaccess in --file--".
        QFile log(QString::fromLocal8Bit(messages));
        QString reason;
        if (log.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : log.read(64 * 1024).split('\n')) {
                if (line.trimmed().startsWith("Error:")) {
                    reason = QString::fromLocal8Bit(line.trimmed());
                    break;
                }
            }
        }
        return detail::failure(reason.isEmpty() ? QStringLiteral("Ghostscript could not render the PostScript.")
                                                : QStringLiteral("Ghostscript could not render the PostScript (%1).").arg(reason));
    }

    QImageReader reader(outputPath, "png");
    QImage image = reader.read();
    if (image.isNull())
        return detail::failure(QStringLiteral("Ghostscript produced no picture."));
    image.setDotsPerMeterX(qRound(dpiX / 0.0254));
    image.setDotsPerMeterY(qRound(dpiY / 0.0254));
    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
