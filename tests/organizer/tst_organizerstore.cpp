#include "OrganizerTestStore.h"

#include "core/app/ProgramFolder.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "core/organizer/OrganizerStore.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlRecord>
#include <QTest>
#include <QThread>

#include <atomic>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tarnby::organizer;

// The catalogue's store on SQLite, and on PostgreSQL when the suite runs it
// under a throw-away server: tables, orders, finds and the whole-file work.
class TestOrganizerStore : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void stamps_data();
    void stamps();
    void sortKeys_data();
    void sortKeys();
    void fileDatesOfRealFiles_data();
    void fileDatesOfRealFiles();
    void fullNames_data();
    void fullNames();

    void fieldPositionsAndIndexes();
    void sortChoices();
    void sortedListings_data();
    void sortedListings();
    void quoteInGroupName();
    void nearestMatch_data();
    void nearestMatch();
    void checkDetailFollowsEntries();
    void updateKeepsDateTimeCreated();
    void batchMakesGroupOnlyWhenNoneExists();
    void clearThenDeleteEveryGroup();
    void compactTwice();
    void catalogueLock_data();
    void catalogueLock();
    void missingOrDamagedFile_data();
    void missingOrDamagedFile();
    void deliveredDatabaseHasTheSchema();
    void unreachableServer();

private:
    FileEntry entry(const QString &group, const QString &name, const QString &type = QStringLiteral("Document"),
                    const QString &date = QStringLiteral("20200101"), const QString &keyword = QString());
    std::unique_ptr<OrganizerTestStore> m_test;
    std::unique_ptr<OrganizerStore> m_store;
};

void TestOrganizerStore::init()
{
    m_test = std::make_unique<OrganizerTestStore>();
    if (OrganizerTestStore::onServer())
        QVERIFY(OrganizerTestStore::dropServerTables());
    m_store = std::make_unique<OrganizerStore>(m_test->location());
    const StoreResult made = m_store->create();
    QVERIFY2(made.ok(), qPrintable(made.error));
}

void TestOrganizerStore::cleanup()
{
    m_store.reset();
    m_test.reset();
}

FileEntry TestOrganizerStore::entry(const QString &group, const QString &name, const QString &type, const QString &date,
                                    const QString &keyword)
{
    FileEntry e;
    e.GroupName = group;
    e.FileName = name;
    e.FileLocation = QStringLiteral("/data");
    e.FileType = type;
    e.Date = date;
    e.FileKeyword = keyword;
    return e;
}

void TestOrganizerStore::stamps_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<QString>("stampTime");
    QTest::addColumn<QString>("display");
    QTest::newRow("09:xx morning keeps its hour") << QTime(9, 0, 5) << "090005" << "03-07-2026 9:00:05 AM";
    QTest::newRow("12:xx noon shows 12 AM") << QTime(12, 30, 7) << "123007" << "03-07-2026 12:30:07 AM";
    QTest::newRow("13:xx shows hour 0 PM") << QTime(13, 5, 9) << "130509" << "03-07-2026 0:05:09 PM";
    QTest::newRow("23:xx shows hour 10 PM") << QTime(23, 59, 1) << "235901" << "03-07-2026 10:59:01 PM";
    QTest::newRow("00:xx shows hour 0 AM") << QTime(0, 15, 0) << "001500" << "03-07-2026 0:15:00 AM";
}

void TestOrganizerStore::stamps()
{
    QFETCH(QTime, time);
    const TimeStamp s = SetTimeStamp(QDateTime(QDate(2026, 3, 7), time));
    QCOMPARE(s.StampDate, QStringLiteral("20260307"));
    QTEST(s.StampTime, "stampTime");
    QTEST(s.StampDisplay, "display");
    QCOMPARE(s.StampDateTime, s.StampDate + s.StampTime);
}

void TestOrganizerStore::sortKeys_data()
{
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("key");
    QTest::newRow("80 is 2080") << "1/2/80" << "20800102";
    QTest::newRow("81 is 1981") << "1/2/81" << "19810102";
    QTest::newRow("00 is 2000") << "12/31/00" << "20001231";
    QTest::newRow("four-digit year gets 19 before it") << "1/2/2000" << "1920000102";
    QTest::newRow("two-digit month and day kept") << "11/24/26" << "20261124";
    QTest::newRow("no slash at all") << "garbage" << "20garbage";
}

void TestOrganizerStore::sortKeys()
{
    QFETCH(QString, date);
    QTEST(DateToSortKey(date), "key");
}

void TestOrganizerStore::fileDatesOfRealFiles_data()
{
    QTest::addColumn<QDateTime>("modified");
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("time");
    QTest::newRow("morning of 1999") << QDateTime(QDate(1999, 3, 14), QTime(10, 23, 45)) << "19990314" << "10:23:45 AM";
    QTest::newRow("afternoon on a 12-hour clock") << QDateTime(QDate(2026, 11, 24), QTime(15, 4, 5)) << "20261124"
                                                   << "3:04:05 PM";
    QTest::newRow("noon is PM for the file") << QDateTime(QDate(2010, 6, 1), QTime(12, 0, 1)) << "20100601"
                                             << "12:00:01 PM";
    QTest::newRow("midnight prints the date alone") << QDateTime(QDate(2001, 2, 3), QTime(0, 0)) << "20010203" << "";
    QTest::newRow("a file of 1975 meets the century rule") << QDateTime(QDate(1975, 5, 6), QTime(8, 0, 0))
                                                            << "20750506" << "8:00:00 AM";
}

void TestOrganizerStore::fileDatesOfRealFiles()
{
    QFETCH(QDateTime, modified);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.txt"));
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    QVERIFY(f.setFileTime(modified, QFileDevice::FileModificationTime));
    f.close();
    QString date, time;
    QVERIFY(fileDateFields(path, &date, &time));
    QTEST(date, "date");
    QTEST(time, "time");
    QVERIFY(!fileDateFields(dir.filePath(QStringLiteral("gone.txt")), &date, &time));
}

void TestOrganizerStore::fullNames_data()
{
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("full");
    QTest::addColumn<QString>("keyword");
    QTest::newRow("file in the root has no doubled separator") << "/" << "a.txt" << "/a.txt" << "";
    QTest::newRow("root with blanks around it") << " / " << "a.txt" << "/a.txt" << "";
    QTest::newRow("folder") << "/home/pat/Pictures" << "b.JPG" << "/home/pat/Pictures/b.JPG" << "Pictures";
}

void TestOrganizerStore::fullNames()
{
    QFETCH(QString, location);
    QFETCH(QString, name);
    QFETCH(QString, full);
    QCOMPARE(entryFullName(location, name), full);
    QTEST(folderKeyword(location.trimmed()), "keyword");
    const SplitName split = splitFullName(full);
    QCOMPARE(split.folder, location.trimmed());
    QCOMPARE(split.fileName, name);
}

void TestOrganizerStore::fieldPositionsAndIndexes()
{
    // The positions the windows write by.
    const QStringList groupFields = groupTableFields();
    QCOMPARE(groupFields.mid(3, 3), (QStringList{"Date", "Time", "DateTimeCreated"}));
    const QStringList fileFields = fileTableFields();
    QCOMPARE(fileFields.at(2), QStringLiteral("FileName"));
    QCOMPARE(fileFields.at(3), QStringLiteral("FileLocation"));
    QCOMPARE(fileFields.at(6), QStringLiteral("FileType"));
    QCOMPARE(fileFields.at(8), QStringLiteral("Date"));
    QCOMPARE(fileFields.at(9), QStringLiteral("Time"));
    QCOMPARE(fileFields.at(10), QStringLiteral("DateTimeCreated"));

    // The database made holds them in that order, and its indexes.
    const StoreLocation l = m_store->location();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(
            l.engine == StoreLocation::Engine::SQLite ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL"),
            QStringLiteral("positions"));
        db.setDatabaseName(l.engine == StoreLocation::Engine::SQLite ? l.file : l.database);
        db.setHostName(l.host);
        db.setPort(l.port);
        db.setUserName(l.user);
        db.setPassword(l.password);
        QVERIFY(db.open());
        for (const auto &[table, fields] : {std::pair{QStringLiteral("GroupTable"), groupFields},
                                            std::pair{QStringLiteral("FileTable"), fileFields}}) {
            const QSqlRecord record = db.record(table);
            QStringList names;
            for (int i = 0; i < record.count(); ++i)
                names << record.fieldName(i);
            QCOMPARE(names, fields);
        }
        QSqlQuery q(db);
        QVERIFY(q.exec(l.engine == StoreLocation::Engine::SQLite
                           ? QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL")
                           : QStringLiteral("SELECT indexname FROM pg_indexes WHERE tablename IN ('GroupTable', 'FileTable')")));
        QStringList indexes;
        while (q.next())
            indexes << q.value(0).toString();
        for (const char *name : {"GroupName", "FileName", "FileKeyword"})
            QVERIFY2(indexes.contains(QLatin1String(name)), name);
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("positions"));
}

void TestOrganizerStore::sortChoices()
{
    QStringList captions;
    for (int i = 0; i < SortChoiceCount; ++i)
        captions << QLatin1String(sortChoice(i).caption);
    QCOMPARE(captions, (QStringList{"Date Added to List", "Group Name", "File Name", "File Type", "File Last Updated",
                                    "File Search Word", "File Path"}));
    QCOMPARE(sortKeyText(keyAfterChoice(0, SortKey::FileName)), QStringLiteral("[ID]"));
    QCOMPARE(sortKeyText(keyAfterChoice(4, SortKey::ID)), QStringLiteral("[Date]"));
    // "File Path" keeps whatever was in force.
    QCOMPARE(keyAfterChoice(6, SortKey::FileType), SortKey::FileType);
    QCOMPARE(keyAfterChoice(6, SortKey::FileKeyword), SortKey::FileKeyword);
}

void TestOrganizerStore::sortedListings_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QStringList>("names");
    // Added in the order c, A, b, d: c is the newest file but was added first.
    QTest::newRow("Date Added to List sorts by ID") << int(SortKey::ID) << QStringList{"c.txt", "A.bmp", "b.doc", "d.txt"};
    QTest::newRow("File Name ignores case") << int(SortKey::FileName) << QStringList{"A.bmp", "b.doc", "c.txt", "d.txt"};
    QTest::newRow("File Type ties in added order") << int(SortKey::FileType)
                                                   << QStringList{"b.doc", "c.txt", "d.txt", "A.bmp"};
    QTest::newRow("File Last Updated") << int(SortKey::Date) << QStringList{"b.doc", "A.bmp", "d.txt", "c.txt"};
    QTest::newRow("File Search Word") << int(SortKey::FileKeyword) << QStringList{"d.txt", "A.bmp", "c.txt", "b.doc"};
    QTest::newRow("Group Name keeps added order") << int(SortKey::GroupName)
                                                  << QStringList{"c.txt", "A.bmp", "b.doc", "d.txt"};
}

void TestOrganizerStore::sortedListings()
{
    QFETCH(int, key);
    QFETCH(QStringList, names);
    QVERIFY(m_store->addGroup({0, "Work", "", "", "", "", ""}));
    StoreResult r;
    m_store->addEntries({entry("Work", "c.txt", "Document", "20260101", "kiwi"),
                         entry("Work", "A.bmp", "Picture", "19990101", "apple"),
                         entry("Work", "b.doc", "Database", "19800101", "Zebra"),
                         entry("Work", "d.txt", "Document", "20000101", "")},
                        &r);
    QVERIFY2(r.ok(), qPrintable(r.error));
    m_store->addEntries({entry("Other", "a0.txt")}, &r);
    QStringList got;
    for (const FileEntry &e : m_store->entries(QStringLiteral("Work"), SortKey(key), &r))
        got << e.FileName;
    QVERIFY2(r.ok(), qPrintable(r.error));
    QCOMPARE(got, names);

    // The IDs of the listing, then its rows a block at a time, give the same
    // order.
    const QList<qint64> ids = m_store->entryIds(QStringLiteral("Work"), SortKey(key), &r);
    QVERIFY(r.ok());
    QStringList byBlocks;
    for (qsizetype i = 0; i < ids.size(); i += 3) {
        for (const FileEntry &e : m_store->entriesWithIds(ids.mid(i, 3), &r))
            byBlocks << e.FileName;
        QVERIFY(r.ok());
    }
    QCOMPARE(byBlocks, names);

    // The plain listing gives the same rows, fields in table order.
    QStringList plain;
    r = m_store->forEachEntry(QStringLiteral("Work"), SortKey(key), [&](const OrganizerStore::RawRow &f) {
        plain << QString::fromUtf8(f.field(2));
        return f.field(1) == QByteArrayView("Work") && f.field(3) == QByteArrayView("/data")
            && f.field(0).toByteArray().toLongLong() > 0;
    });
    QVERIFY2(r.ok(), qPrintable(r.error));
    QCOMPARE(plain, names);
    // A sink that says stop ends the listing.
    plain.clear();
    m_store->forEachEntry(QStringLiteral("Work"), SortKey(key), [&](const OrganizerStore::RawRow &f) {
        plain << QString::fromUtf8(f.field(2));
        return false;
    });
    QCOMPARE(plain.size(), 1);

    // An ID whose entry has gone is left out of its block.
    QVERIFY(m_store->deleteEntry(ids.at(1)).ok());
    QStringList afterDelete;
    for (const FileEntry &e : m_store->entriesWithIds(ids, &r))
        afterDelete << e.FileName;
    QCOMPARE(afterDelete, QStringList(names.mid(0, 1) + names.mid(2)));
}

void TestOrganizerStore::quoteInGroupName()
{
    const QString name = QStringLiteral("Pat's \"best\" Photos");
    StoreResult r;
    QVERIFY(m_store->addGroup(groupMadeOnTheFly(name, SetTimeStamp()), &r) > 0);
    QVERIFY(!m_store->CheckDetail(name, &r));
    QVERIFY(r.ok());
    m_store->addEntries({entry(name, "x.jpg"), entry(name, "y.jpg")}, &r);
    QVERIFY(m_store->CheckDetail(name, &r));
    QCOMPARE(m_store->entries(name, SortKey::FileName, &r).size(), 2);
    QVERIFY(r.ok());
    QCOMPARE(m_store->groupCounts(&r).first().entries, 2);
    // A name that would end a quoted string and add a clause stays a value.
    QCOMPARE(m_store->entries(QStringLiteral("x' OR '1'='1"), SortKey::ID, &r).size(), 0);
    QVERIFY(r.ok());
}

void TestOrganizerStore::nearestMatch_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("found");
    QTest::newRow("m lands on Mail.TXT") << int(FindField::FileName) << "m" << "Mail.TXT";
    QTest::newRow("exact name") << int(FindField::FileName) << "zoo.png" << "zoo.png";
    QTest::newRow("between names goes on to the next") << int(FindField::FileName) << "n" << "zoo.png";
    QTest::newRow("upper case text") << int(FindField::FileName) << "MAIL" << "Mail.TXT";
    QTest::newRow("after every name finds none") << int(FindField::FileName) << "zz" << "";
    QTest::newRow("keyword nearest") << int(FindField::FileKeyword) << "ho" << "zoo.png";
    QTest::newRow("keyword first of equal ones") << int(FindField::FileKeyword) << "Beach" << "alpha.jpg";
}

void TestOrganizerStore::nearestMatch()
{
    QFETCH(int, field);
    QFETCH(QString, text);
    QFETCH(QString, found);
    StoreResult r;
    m_store->addEntries({entry("G", "alpha.jpg", "Picture", "", "beach"), entry("G", "zoo.png", "Picture", "", "Holiday"),
                         entry("G", "Mail.TXT", "Document", "", "work"), entry("G", "beta.jpg", "Picture", "", "beach")},
                        &r);
    const std::optional<FileEntry> hit = m_store->findNearest(FindField(field), text, &r);
    QVERIFY2(r.ok(), qPrintable(r.error));
    QCOMPARE(hit ? hit->FileName : QString(), found);
}

void TestOrganizerStore::checkDetailFollowsEntries()
{
    StoreResult r;
    m_store->addGroup(groupMadeOnTheFly(QStringLiteral("One"), SetTimeStamp()), &r);
    const QList<qint64> ids = m_store->addEntries({entry("One", "only.txt")}, &r);
    QCOMPARE(ids.size(), 1);
    QVERIFY(m_store->CheckDetail(QStringLiteral("One")));
    QVERIFY(m_store->CheckDetail(QStringLiteral("one"))); // names compare without regard to case
    QVERIFY(m_store->deleteEntry(ids.first()).ok());
    QVERIFY(!m_store->CheckDetail(QStringLiteral("One"), &r));
    QVERIFY(r.ok());
}

void TestOrganizerStore::updateKeepsDateTimeCreated()
{
    StoreResult r;
    const qint64 id = m_store->addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp(QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5)))), &r);
    GroupRow row = *m_store->group(id);
    const TimeStamp later = SetTimeStamp(QDateTime(QDate(2021, 6, 7), QTime(13, 0, 0)));
    row.GroupName = QStringLiteral("Renamed");
    row.Date = later.StampDate;
    row.Time = later.StampTime;
    row.DateDisp = later.StampDisplay;
    row.DateTimeCreated = later.StampDateTime; // never written by an update
    QVERIFY(m_store->updateGroup(row).ok());
    const GroupRow saved = *m_store->group(id);
    QCOMPARE(saved.GroupName, QStringLiteral("Renamed"));
    QCOMPARE(saved.Date, QStringLiteral("20210607"));
    QCOMPARE(saved.DateTimeCreated, QStringLiteral("20200102030405"));

    const QList<qint64> ids = m_store->addEntries({entry("Renamed", "a.txt")}, &r);
    FileEntry e = *m_store->entry(ids.first());
    e.DateTimeCreated = QStringLiteral("x");
    e.Comments = QStringLiteral("memo\nline two");
    QVERIFY(m_store->updateEntry(e).ok());
    QCOMPARE(m_store->entry(ids.first())->Comments, e.Comments);
    QCOMPARE(m_store->entry(ids.first())->DateTimeCreated, QString(""));
}

void TestOrganizerStore::batchMakesGroupOnlyWhenNoneExists()
{
    QTemporaryDir files;
    for (const char *n : {"a.jpg", "b.txt"}) {
        QFile f(files.filePath(QLatin1String(n)));
        QVERIFY(f.open(QIODevice::WriteOnly));
    }
    const TimeStamp stamp = SetTimeStamp();
    StoreResult r;
    const QList<FileEntry> rows = batchEntries(QStringLiteral("New Group"), files.path(), {"a.jpg", "b.txt"}, stamp);
    QCOMPARE(rows.first().FileDescription, QStringLiteral("a.jpg Description"));
    QCOMPARE(rows.first().FileType, QStringLiteral("Picture"));
    QCOMPARE(rows.first().FileKeyword, QFileInfo(files.path()).fileName());
    QVERIFY(!rows.first().Date.isEmpty());
    QCOMPARE(m_store->addBatch(groupMadeOnTheFly(QStringLiteral("New Group"), stamp), rows, &r).size(), 2);
    QCOMPARE(m_store->groupNames(), QStringList{"New Group"});
    QCOMPARE(m_store->groups().first().GroupDesc, QStringLiteral("New Group Description"));
    // A second batch finds a group and makes none.
    m_store->addBatch(groupMadeOnTheFly(QStringLiteral("Else"), stamp), rows, &r);
    QCOMPARE(m_store->groupNames(), QStringList{"New Group"});
    const QList<FileEntry> all = m_store->entries(QStringLiteral("New Group"), SortKey::ID);
    QCOMPARE(all.size(), 4);
    for (const FileEntry &e : all)
        QCOMPARE(e.DateTimeCreated, stamp.StampDateTime);
    // An empty folder adds nothing.
    QVERIFY(m_store->addBatch(groupMadeOnTheFly(QStringLiteral("New Group"), stamp), {}, &r).isEmpty());
    QVERIFY(r.ok());
}

void TestOrganizerStore::clearThenDeleteEveryGroup()
{
    StoreResult r;
    for (const char *g : {"A", "B"}) {
        m_store->addGroup(groupMadeOnTheFly(QLatin1String(g), SetTimeStamp()), &r);
        m_store->addEntries({entry(QLatin1String(g), "x.txt"), entry(QLatin1String(g), "y.txt")}, &r);
    }
    QVERIFY(m_store->clear().ok());
    QCOMPARE(m_store->entryCount(&r), 0);
    QVERIFY(r.ok());
    const QList<GroupRow> groups = m_store->groups();
    QCOMPARE(groups.size(), 2);
    for (const GroupRow &g : groups) {
        QVERIFY(!m_store->CheckDetail(g.GroupName));
        QVERIFY(m_store->deleteGroup(g.ID).ok());
    }
    QVERIFY(m_store->groups(&r).isEmpty());
    if (!OrganizerTestStore::onServer())
        QVERIFY(!QFile::exists(m_test->dir.filePath(ClearFileName)));
}

void TestOrganizerStore::compactTwice()
{
    StoreResult r;
    QList<FileEntry> rows;
    for (int i = 0; i < 500; ++i)
        rows << entry("G", QStringLiteral("f%1.txt").arg(i));
    m_store->addEntries(rows, &r);
    for (qint64 id : m_store->entryIds(TableOrder::ID).mid(0, 400))
        m_store->deleteEntry(id);
    if (!OrganizerTestStore::onServer()) {
        // Left by an earlier run that failed half-way.
        QFile stale(m_test->dir.filePath(CompactFileName));
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write("not a database");
        stale.close();
        QFile journal(m_test->dir.filePath(CompactFileName + QStringLiteral("-journal")));
        QVERIFY(journal.open(QIODevice::WriteOnly));
        journal.close();
    }
    const qint64 before = QFileInfo(m_store->location().file).size();
    for (int round = 0; round < 2; ++round) {
        const StoreResult c = m_store->compact();
        QVERIFY2(c.ok(), qPrintable(c.error));
        QCOMPARE(m_store->entryCount(), 100);
        QVERIFY(m_store->repair().ok());
    }
    if (!OrganizerTestStore::onServer()) {
        QVERIFY(QFileInfo(m_store->location().file).size() < before);
        QVERIFY(!QFile::exists(m_test->dir.filePath(CompactFileName)));
        QVERIFY(!QFile::exists(m_test->dir.filePath(CompactFileName + QStringLiteral("-journal"))));
    }
    // New rows still get new numbers after the compaction.
    const QList<qint64> ids = m_store->addEntries({entry("G", "new.txt")}, &r);
    QVERIFY(ids.first() > 500);
}

namespace {

enum class LockedOperation { Compact, Read, Write, Create };

ino_t inodeOf(const QString &path)
{
    struct stat st {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_ino : 0;
}

} // namespace

void TestOrganizerStore::catalogueLock_data()
{
    QTest::addColumn<int>("held"); // how the test holds the catalogue's lock
    QTest::addColumn<int>("operationRow");
    // Another process's connection, opened on the file just before a
    // compaction would rename its copy over it and not yet read from: the
    // file stays under the name until the connection has ended.
    QTest::newRow("compaction waits for a connection open on the file") << LOCK_SH << int(LockedOperation::Compact);
    // Another process's compaction, somewhere between its mark and its rename.
    QTest::newRow("a read waits for a compaction") << LOCK_EX << int(LockedOperation::Read);
    QTest::newRow("a write waits for a compaction") << LOCK_EX << int(LockedOperation::Write);
    QTest::newRow("making a missing catalogue waits for another maker") << LOCK_EX << int(LockedOperation::Create);
}

void TestOrganizerStore::catalogueLock()
{
    if (OrganizerTestStore::onServer())
        QSKIP("a file of the program folder only");
    QFETCH(int, held);
    QFETCH(int, operationRow);
    const auto operation = LockedOperation(operationRow);
    const QString file = m_store->location().file;
    QVERIFY(m_store->addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp())) > 0);
    if (operation == LockedOperation::Create)
        QVERIFY(QFile::remove(file));
    const ino_t before = inodeOf(file);

    // The lock every process sharing the file keeps to: a flock on its folder.
    const int folder = ::open(QFile::encodeName(m_test->dir.path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    QVERIFY(folder >= 0);
    QCOMPARE(::flock(folder, held), 0);
    const QString connection = QStringLiteral("held-open");
    if (held == LOCK_SH) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(file);
        QVERIFY(db.open());
    }

    std::atomic_bool done{false};
    StoreResult result;
    const StoreLocation location = m_store->location();
    std::unique_ptr<QThread> other(QThread::create([&] {
        const OrganizerStore store(location);
        switch (operation) {
        case LockedOperation::Compact: result = store.compact(); break;
        case LockedOperation::Read: store.groups(&result); break;
        case LockedOperation::Write: store.addGroup(groupMadeOnTheFly(QStringLiteral("H"), SetTimeStamp()), &result); break;
        case LockedOperation::Create: result = store.create(); break;
        }
        done = true;
    }));
    other->start();
    QThread::msleep(300);
    const bool waited = !done;
    const ino_t during = inodeOf(file);
    if (held == LOCK_SH)
        QSqlDatabase::database(connection, false).close();
    QSqlDatabase::removeDatabase(connection);
    ::close(folder);
    QVERIFY(other->wait(20000));

    QVERIFY(waited);
    QCOMPARE(during, before);
    QVERIFY2(result.ok(), qPrintable(result.error));
    switch (operation) {
    case LockedOperation::Compact: QVERIFY(inodeOf(file) != before); break;
    case LockedOperation::Read: break;
    case LockedOperation::Write: QCOMPARE(m_store->groupNames(), (QStringList{"G", "H"})); break;
    case LockedOperation::Create: QVERIFY(m_store->check().ok()); break;
    }
}

void TestOrganizerStore::missingOrDamagedFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("status");
    QTest::newRow("missing") << QByteArray() << int(StoreStatus::Missing);
    QTest::newRow("text file") << QByteArray("This is not a database at all, just some text.\n").repeated(40)
                               << int(StoreStatus::Damaged);
    QTest::newRow("header then garbage") << QByteArray("SQLite format 3\0", 16) + QByteArray(4000, '\xff')
                                         << int(StoreStatus::Damaged);
    QTest::newRow("empty file") << QByteArray("") << int(StoreStatus::Damaged);
}

void TestOrganizerStore::missingOrDamagedFile()
{
    if (OrganizerTestStore::onServer())
        QSKIP("a file of the program folder only");
    QFETCH(QByteArray, content);
    QFETCH(int, status);
    const QString file = m_store->location().file;
    QVERIFY(QFile::remove(file));
    if (!content.isNull()) {
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    const StoreResult checked = m_store->check();
    QCOMPARE(int(checked.status), status);
    QVERIFY(!checked.error.isEmpty());
    StoreResult r;
    QVERIFY(m_store->groups(&r).isEmpty());
    QCOMPARE(int(r.status), status);
    QVERIFY(m_store->addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp()), &r) == 0);
    // Nothing made a file where there was none.
    QCOMPARE(QFile::exists(file), !content.isNull());
    if (content.isNull()) {
        // The repair makes a missing catalogue anew.
        QVERIFY(m_store->repair().ok());
        QVERIFY(m_store->check().ok());
    }
}

void TestOrganizerStore::deliveredDatabaseHasTheSchema()
{
    if (OrganizerTestStore::onServer())
        QSKIP("a file of the program folder only");
    QTemporaryDir home;
    QStringList warnings;
    QVERIFY(tarnby::seedProgramFolder(home.path(), &warnings).contains(DatabaseFileName));
    auto schema = [](const QString &file) {
        QStringList lines;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("schema"));
            db.setDatabaseName(file);
            if (db.open()) {
                QSqlQuery q(QStringLiteral("SELECT type, name, sql FROM sqlite_master ORDER BY name"), db);
                while (q.next())
                    lines << q.value(0).toString() + q.value(1).toString() + q.value(2).toString();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("schema"));
        return lines;
    };
    const QStringList delivered = schema(QDir(home.path()).filePath(DatabaseFileName));
    QVERIFY(!delivered.isEmpty());
    QCOMPARE(delivered, schema(m_store->location().file));
    const OrganizerStore seeded(StoreLocation::inFolder(home.path()));
    QVERIFY(seeded.check().ok());
    QCOMPARE(seeded.entryCount(), 0);
    QVERIFY(seeded.groups().isEmpty());
}

void TestOrganizerStore::unreachableServer()
{
    StoreLocation l;
    l.engine = StoreLocation::Engine::PostgreSQL;
    l.host = QStringLiteral("127.0.0.1");
    l.port = 1; // nothing listens there
    l.database = QStringLiteral("tarnby");
    l.user = QStringLiteral("nobody");
    const OrganizerStore store(l);
    const StoreResult r = store.check();
    QCOMPARE(r.status, StoreStatus::Unreachable);
    QVERIFY2(r.error.contains(QLatin1String("nobody@127.0.0.1:1/tarnby")), qPrintable(r.error));
    StoreResult listed;
    QVERIFY(store.groups(&listed).isEmpty());
    QCOMPARE(listed.status, StoreStatus::Unreachable);
}

QTEST_GUILESS_MAIN(TestOrganizerStore)
#include "tst_organizerstore.moc"
