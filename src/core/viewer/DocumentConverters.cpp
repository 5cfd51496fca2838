#include "core/viewer/DocumentConverters.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <librevenge-generators/librevenge-generators.h>
#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwps/libwps.h>

namespace tarnby::viewer {

ConvertedDocument convertWorksDocument(const QString &path)
{
    ConvertedDocument result;
    const QByteArray local = QFile::encodeName(path);
    librevenge::RVNGFileStream input(local.constData());
    libwps::WPSKind kind = libwps::WPS_TEXT;
    libwps::WPSCreator creator = libwps::WPS_MSWORKS;
    bool needsEncoding = false;
    const libwps::WPSConfidence confidence =
        libwps::WPSDocument::isFileFormatSupported(&input, kind, creator, needsEncoding);
    if (confidence == libwps::WPS_CONFIDENCE_NONE || kind != libwps::WPS_TEXT) {
        result.errorString = QStringLiteral("The file is not a Works word processor document.");
        return result;
    }
    if (confidence == libwps::WPS_CONFIDENCE_SUPPORTED_ENCRYPTION) {
        result.errorString = QStringLiteral("The document is protected by a password.");
        return result;
    }
    librevenge::RVNGString html;
    librevenge::RVNGHTMLTextGenerator generator(html);
    // Old DOS and Windows 3 Works files carry no character set; theirs was the
    // western Windows one.
    const libwps::WPSResult parsed =
        libwps::WPSDocument::parse(&input, &generator, "", needsEncoding ? "CP1252" : "");
    if (parsed != libwps::WPS_OK) {
        result.errorString = QStringLiteral("The Works document could not be read.");
        return result;
    }
    result.html = QString::fromUtf8(html.cstr());
    return result;
}

namespace {

struct ToolRun {
    bool started = false;
    bool finished = false;
    int exitCode = -1;
    QByteArray out;
    QString err;
};

ToolRun runTool(const QString &name, const QStringList &arguments, int timeoutMs)
{
    ToolRun run;
    const QString program = QStandardPaths::findExecutable(name);
    if (program.isEmpty())
        return run;
    QProcess process;
    process.start(program, arguments);
    run.started = process.waitForStarted(5000);
    if (!run.started)
        return run;
    run.finished = process.waitForFinished(timeoutMs);
    if (!run.finished) {
        process.kill();
        process.waitForFinished(1000);
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    return run;
}

} // namespace

ConvertedDocument convertWordDocument(const QString &path, int timeoutMs)
{
    ConvertedDocument result;
    // antiword lays the text out best; it refuses some short Word 6 and Word 97
    // files, which catdoc reads. A file that antiword finds is no Word file at
    // all (a WordPerfect file named .doc, say) is not handed on: catdoc would
    // show its bytes as text.
    const ToolRun anti = runTool(QStringLiteral("antiword"),
                                 {QStringLiteral("-m"), QStringLiteral("UTF-8.txt"), QStringLiteral("-w"),
                                  QStringLiteral("0"), path},
                                 timeoutMs);
    if (anti.finished && anti.exitCode == 0 && !anti.out.trimmed().isEmpty()) {
        result.plainText = QString::fromUtf8(anti.out);
        return result;
    }
    if (anti.err.contains(QLatin1String("not a Word Document"), Qt::CaseInsensitive)) {
        result.errorString = QStringLiteral("The file is not a Word document.");
        return result;
    }
    if (anti.err.contains(QLatin1String("Encrypted"), Qt::CaseInsensitive)) {
        result.errorString = QStringLiteral("The document is protected by a password.");
        return result;
    }
    const ToolRun cat = runTool(QStringLiteral("catdoc"), {QStringLiteral("-d"), QStringLiteral("utf-8"),
                                                          QStringLiteral("-w"), path},
                                timeoutMs);
    if (cat.finished && cat.exitCode == 0 && !cat.out.trimmed().isEmpty()) {
        result.plainText = QString::fromUtf8(cat.out);
        return result;
    }
    if (!anti.started && !cat.started)
        result.errorString = QStringLiteral("No Word document converter (antiword or catdoc) is installed.");
    else if (!cat.err.isEmpty())
        result.errorString = cat.err;
    else if (!anti.err.isEmpty())
        result.errorString = anti.err;
    else
        result.errorString = QStringLiteral("The Word document could not be read.");
    return result;
}

} // namespace tarnby::viewer
