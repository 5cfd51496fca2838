// The table view over a large dBASE table: the time from asking the viewing
// frame for the window to the end of the grid's first paint (the first
// screen of rows on the screen), then the memory the process holds after
// paging through the whole table to its last row, against the memory before
// the window opened. Runs on Qt's offscreen platform unless told otherwise.
//
//   bench_tableview TABLE.dbf [STEPS]     (STEPS page jumps to the end; 400 by default)

#include "core/app/AppState.h"
#include "core/tables/TableModel.h"
#include "core/viewer/DocumentRules.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"
#include "ui/viewer/TableDocumentView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>

using namespace tarnby;

namespace {

// The resident set of this process, in kilobytes.
qint64 residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// Notes that a widget got a paint event. The event is handled in full
// before processEvents() returns, so a flag seen set after it means a
// finished paint.
class PaintWatch : public QObject
{
public:
    bool painted = false;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        Q_UNUSED(watched)
        if (event->type() == QEvent::Paint)
            painted = true;
        return false;
    }
};

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);
    if (argc < 2) {
        out << "usage: bench_tableview TABLE.dbf [STEPS]\n";
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    const int steps = argc > 2 ? QByteArray(argv[2]).toInt() : 400;

    QTemporaryDir home;
    AppState state;
    state.programFolder = home.path();
    ui::UiServices services;
    services.messages.setResponder([&](const ui::MessageRequest &request) {
        out << "message: " << request.text << "\n";
        return ui::MessageAnswer::Ok;
    });
    ui::MDIForm1 frame(state, services);
    frame.resize(1200, 900);
    frame.show();
    QCoreApplication::processEvents();
    const qint64 before = residentKilobytes();

    QElapsedTimer clock;
    clock.start();
    auto *window = qobject_cast<ui::ChildFrm1 *>(frame.NewWindowFile(path, viewer::DocumentKind::Database));
    if (!window)
        return 1;
    auto *grid = window->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"));
    PaintWatch watch;
    grid->viewport()->installEventFilter(&watch);
    // The file opens on a worker: the first screen of rows is the first
    // paint after the view says it has opened.
    auto *view = qobject_cast<ui::TableDocumentView *>(window->documentView());
    bool opened = false;
    if (view)
        QObject::connect(view, &ui::TableDocumentView::opened, [&] {
            opened = true;
            watch.painted = false;
        });
    while (!(opened && watch.painted) && clock.elapsed() < 60000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    const qint64 firstScreen = clock.elapsed();
    const qint64 afterOpen = residentKilobytes();

    const int rows = view && view->model() ? view->model()->rowCount() : 0;
    QScrollBar *bar = grid->verticalScrollBar();
    clock.restart();
    for (int i = 1; i <= steps; ++i) {
        watch.painted = false;
        bar->setValue(int(qint64(bar->maximum()) * i / steps));
        while (!watch.painted)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    const qint64 scrolling = clock.elapsed();
    const qint64 afterScroll = residentKilobytes();

    out << "rows: " << rows << "\n";
    out << "first screen painted: " << firstScreen << " ms\n";
    out << "paging to the end in " << steps << " jumps: " << scrolling << " ms\n";
    out << "resident before the window: " << before / 1024 << " MB\n";
    out << "resident after the first screen: " << afterOpen / 1024 << " MB (+" << (afterOpen - before) / 1024
        << " MB)\n";
    out << "resident after paging to the end: " << afterScroll / 1024 << " MB (+" << (afterScroll - before) / 1024
        << " MB)\n";
    out << "pages of rows held by the model: " << (view && view->model() ? view->model()->pagesHeld() : 0) << " of at most "
        << tables::TableModel::maxPages << "\n";
    return 0;
}
