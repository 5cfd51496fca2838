#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

namespace tarnby::catalogue {
struct FileType;
}

// The small rules of a document window that need no widget: how it sizes
// itself, what its status panels read, which view a document goes to and how
// long an Internet picture may take. Pure functions, safe on any thread.
namespace tarnby::viewer {

// The kind letter of a document window.
enum class DocumentKind { Picture, Text, Database };

QString kindLetter(DocumentKind kind);      // "I", "T", "D"
DocumentKind kindFromLetter(const QString &letter); // anything but "T" and "D" is a picture
// The kind of window that opens a file of this catalogue lookup: the database
// band makes a table window, the text band a text window, and everything else
// (an unknown or empty extension included) a picture window.
DocumentKind kindOf(const catalogue::FileType &type);

// ANI and FLC pictures are animations: every page of the file is loaded.
bool loadsAllPages(const QString &extension);

// Where a text-kind document is shown.
enum class TextView {
    RichText,  // RTF, always in the rich-text box
    WebView,   // DOC, HTM, HTML, SHTML, WPS unless the option sends them to the text box
    PlainText, // everything else
};
TextView textViewFor(const QString &extension, bool useTextDoc);

// True for an http:// or https:// address (any case).
bool isInternetAddress(const QString &path);

// The file name that Save As offers: the text after the last separator. A name
// that begins with "HTTP:" (any case) is an Internet address and is cut at the
// last "/".
QString saveAsFileName(const QString &path);

// The outer size of a picture window in twips: the picture's pixels in twips
// plus the window's non-client size (its outer size minus its inner size).
QSize pictureWindowTwips(QSize picturePixels, double twipsPerPixelX, double twipsPerPixelY, QSize nonClientTwips);

// Show text: the window is 6500 by 4000 twips at the frame's top left corner.
inline constexpr int TextWindowWidthTwips = 6500;
inline constexpr int TextWindowHeightTwips = 4000;
// The text box's size for a window of windowTwips (outer size): 420 twips less
// in height and 100 less in width; a dimension at or below its margin keeps
// the box's previous value.
QSize textBoxTwips(QSize windowTwips, QSize previousBoxTwips);

// A size on disk as the status bar shows it: thousands separators, no
// decimals, two spaces and "Bytes".
QString formatByteCount(qint64 bytes);

struct StatusPanels {
    QString first, second, third;
};
StatusPanels pictureStatusPanels(int width, int height, int bitsPerPixel, qint64 sizeOnDisk);
StatusPanels fileStatusPanels(qint64 fileLength);

// The 51-second rule of an Internet picture: the window notes the whole second
// when the fetch began and checks on every timer tick. Until 51 seconds have
// passed nothing happens; from then on a fetch that has not completed has
// failed. The clock is injectable so that the rule is testable without waiting.
class InternetFetchWatch
{
public:
    using Clock = std::function<qint64()>; // whole seconds
    static constexpr qint64 TimeoutSeconds = 51;

    enum class Verdict { Idle, Waiting, Completed, TimedOut };

    explicit InternetFetchWatch(Clock clock = systemClock());

    void start();
    void stop() { m_running = false; }
    bool isRunning() const { return m_running; }
    // One timer tick; completed tells whether the picture has arrived. A
    // Completed or TimedOut verdict ends the wait.
    Verdict check(bool completed);

    static Clock systemClock();

private:
    Clock m_clock;
    qint64 m_started = 0;
    bool m_running = false;
};

} // namespace tarnby::viewer
