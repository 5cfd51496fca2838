// The organizer's in-process timings for bench/organizer.sh: the nearest-match
// find (the best of 20 runs, each opening and closing the catalogue as the
// find window does) and the group browser's first screen (window built, shown
// and painted once) on the program folder given.
//
//   tarnby-bench-organizer PROGRAM_FOLDER GROUP
//
// With --postgres, the sorted listing on the PostgreSQL server that the PG*
// variables name (the catalogue's tables are made there when missing, and N
// entries are put into the group "Big" when it has none): for each key, the
// listing written out as tarnby-cli group files writes it, with its wall and
// processor time and how much the process's peak memory grew, which stays
// small when the rows are streamed rather than gathered first.
//
//   tarnby-bench-organizer --postgres N

#include "core/app/AppState.h"
#include "core/organizer/OrganizerStore.h"
#include "ui/organizer/GrpBrow1.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableView>

#include <cstdio>

#include <sys/resource.h>
#include <time.h>

namespace {

using namespace tarnby::organizer;

long peakKiB()
{
    rusage u {};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

double processorSeconds()
{
    timespec t {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + t.tv_nsec / 1e9;
}

int postgresListing(int n)
{
    StoreLocation l;
    l.engine = StoreLocation::Engine::PostgreSQL;
    l.host = qEnvironmentVariable("PGHOST", QStringLiteral("localhost"));
    l.port = qEnvironmentVariableIntValue("PGPORT") ? qEnvironmentVariableIntValue("PGPORT") : 5432;
    l.database = qEnvironmentVariable("PGDATABASE", QStringLiteral("postgres"));
    l.user = qEnvironmentVariable("PGUSER", QStringLiteral("postgres"));
    l.password = qEnvironmentVariable("PGPASSWORD");
    const OrganizerStore store(l);
    StoreResult r = store.create();
    if (!r.ok()) {
        std::fprintf(stderr, "%s\n", qPrintable(r.error));
        return 1;
    }
    if (store.entryCount() == 0) {
        static const char *const kinds[] = {"jpg", "txt", "doc", "bmp", "mdb", "wav", "ini", "xyz"};
        static const char *const types[] = {"Picture", "Document", "Document", "Picture", "Database", "Multimedia",
                                            "System", "Miscellaneous"};
        GroupRow g;
        g.GroupName = QStringLiteral("Big");
        g.GroupDesc = QStringLiteral("Big Description");
        store.addGroup(g, &r);
        QList<FileEntry> rows;
        rows.reserve(n);
        for (int i = 0; i < n; ++i) {
            FileEntry e;
            e.GroupName = g.GroupName;
            e.FileName = QStringLiteral("file%1.%2").arg((qint64(i) * 7919) % n, 6, 10, QLatin1Char('0')).arg(QLatin1String(kinds[i % 8]));
            e.FileLocation = QStringLiteral("/tmp/tarnby-bench/organizer-tree/folder%1").arg(i / 1000, 3, 10, QLatin1Char('0'));
            e.FileDescription = e.FileName + QStringLiteral(" Description");
            e.FileKeyword = QStringLiteral("folder%1").arg(i / 1000, 3, 10, QLatin1Char('0'));
            e.FileType = QLatin1String(types[i % 8]);
            e.Date = QStringLiteral("20%1%2%3").arg(i % 30, 2, 10, QLatin1Char('0')).arg(1 + i % 12, 2, 10, QLatin1Char('0')).arg(1 + i % 28, 2, 10, QLatin1Char('0'));
            e.Time = QStringLiteral("%1:%2:%3 AM").arg(1 + i % 12).arg(i % 60, 2, 10, QLatin1Char('0')).arg(i % 59, 2, 10, QLatin1Char('0'));
            e.DateTimeCreated = QStringLiteral("20261124090000");
            e.DateDisp = QStringLiteral("11-24-2026 9:00:00 AM");
            rows << e;
        }
        store.addEntries(rows, &r);
        if (!r.ok()) {
            std::fprintf(stderr, "%s\n", qPrintable(r.error));
            return 1;
        }
    }
    std::FILE *sink = std::fopen("/dev/null", "wb");
    static const char *const names[] = {"id", "group", "name", "type", "date", "keyword"};
    for (const char *name : names) {
        const SortKey key = *sortKeyFromName(QLatin1String(name));
        const long peak0 = peakKiB();
        const double cpu0 = processorSeconds();
        QElapsedTimer t;
        t.start();
        // The columns tarnby-cli group files prints, a buffer at a time.
        static constexpr int columns[] = {1, 2, 3, 4, 5, 6, 8, 9, 11};
        QByteArray buffer;
        qint64 count = 0;
        r = store.forEachEntry(QStringLiteral("Big"), key, [&](const OrganizerStore::RawRow &row) {
            for (int c : columns) {
                buffer.append(row.field(c));
                buffer.append(c == 11 ? '\n' : '\t');
            }
            if (buffer.size() > (1 << 16)) {
                std::fwrite(buffer.constData(), 1, size_t(buffer.size()), sink);
                buffer.clear();
            }
            ++count;
            return true;
        });
        std::fwrite(buffer.constData(), 1, size_t(buffer.size()), sink);
        if (!r.ok()) {
            std::fprintf(stderr, "%s\n", qPrintable(r.error));
            return 1;
        }
        std::printf("%-32s %7.3f %7.3f   peak memory +%ld KiB, %lld rows\n",
                    qPrintable(QStringLiteral("listing by %1 (in process)").arg(QLatin1String(name))),
                    t.nsecsElapsed() / 1e9, processorSeconds() - cpu0, peakKiB() - peak0, count);
    }
    std::fclose(sink);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--postgres") == 0)
        return postgresListing(std::max(1, std::atoi(argv[2])));
    if (argc < 3) {
        std::fprintf(stderr, "usage: tarnby-bench-organizer PROGRAM_FOLDER GROUP\n");
        return 2;
    }
    using namespace tarnby;
    const organizer::OrganizerStore store(organizer::StoreLocation::inFolder(QString::fromLocal8Bit(argv[1])));
    double best = 1e9;
    QString found;
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer t;
        t.start();
        const auto hit = store.findNearest(organizer::FindField::FileName, QStringLiteral("file05"));
        best = std::min(best, t.nsecsElapsed() / 1e6);
        found = hit ? hit->FileName : QString();
    }
    std::printf("nearest match \"file05\": %.2f ms (best of 20), found %s\n", best, qPrintable(found));

    AppState state;
    state.programFolder = QString::fromLocal8Bit(argv[1]);
    ui::UiServices services;
    QElapsedTimer t;
    t.start();
    ui::GrpBrow1 window(state, services, store);
    window.show();
    window.grid(0)->viewport()->repaint();
    app.processEvents();
    std::printf("group browser first screen: %.1f ms, %d rows read, group %s\n", t.nsecsElapsed() / 1e6,
                window.entries()->rowCount(), qPrintable(window.currentGroup()));
    return 0;
}
