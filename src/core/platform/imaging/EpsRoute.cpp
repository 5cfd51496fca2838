#include "core/platform/imaging/VectorRoutes.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImageReader>
#include <QRegularExpression>
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

BoundingBox boundingBox(const QByteArray &ps)
{
    static const QRegularExpression re(QStringLiteral(
        R"(%%BoundingBox:\s*(-?[0-9.]+)\s+(-?[0-9.]+)\s+(-?[0-9.]+)\s+(-?[0-9.]+))"));
    BoundingBox box;
    const QRegularExpressionMatch m = re.match(QString::fromLatin1(ps.left(64 * 1024)));
    if (m.hasMatch()) {
        BoundingBox b{m.captured(1).toDouble(), m.captured(2).toDouble(), m.captured(3).toDouble(),
                      m.captured(4).toDouble()};
        if (b.x2 > b.x1 && b.y2 > b.y1)
            box = b;
    }
    return box;
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
[[noreturn]] void renderInChild(const QByteArray &input, const QByteArray &output, const QByteArray &messages,
                               int width, int height)
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
    // The device always works at 72 dots per inch (far lower ones fail in
    // its halftone set-up); -dEPSFitPage scales the drawing to the page of
    // -g pixels, which carries the bound.
    const QByteArray resolution = "-r72";
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

    const BoundingBox box = boundingBox(ps);
    const double widthPt = box.x2 - box.x1;
    const double heightPt = box.y2 - box.y1;
    // 72 dots per inch (one pixel per point), less for drawings that would
    // otherwise exceed the bitmap bound.
    double dpi = 72.0;
    const double longer = qMax(widthPt, heightPt);
    if (longer > MaxVectorSide)
        dpi = 72.0 * MaxVectorSide / longer;
    const int width = qMax(1, qRound(widthPt * dpi / 72.0));
    const int height = qMax(1, qRound(heightPt * dpi / 72.0));

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
        renderInChild(input, output, messages, width, height);

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
    image.setDotsPerMeterX(qRound(dpi / 0.0254));
    image.setDotsPerMeterY(qRound(dpi / 0.0254));
    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
