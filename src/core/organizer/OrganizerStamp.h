#pragma once

#include <QDateTime>
#include <QString>

// The organizer's time stamps and the small text rules that every organizer
// window shares: the moment a row is written, the sortable date of a file, and
// the full name of an entry's file.
namespace tarnby::organizer {

// The moment a row is written, in the four forms the tables keep.
struct TimeStamp {
    QString StampDate;     // YYYYMMDD
    QString StampTime;     // HHMMSS, 24-hour
    QString StampDisplay;  // "11-24-2026 0:05:07 PM" (see SetTimeStamp)
    QString StampDateTime; // StampDate + StampTime
};

// Fills the four stamp values from now (the system clock when now is not
// valid). The display form is the date as month-day-year with dashes, a blank,
// the displayed hour without padding, ":" minutes ":" seconds, a blank and
// "AM" or "PM". After noon the displayed hour is the hour minus 13, so 13:05
// shows as "0:05:.. PM" and 23:59 as "10:59:.. PM", while 12:30 stays
// "12:30:.. AM": the catalogue has always written it so, and rows written
// before must keep sorting and reading the same.
TimeStamp SetTimeStamp(const QDateTime &now = QDateTime());

// Turns a month/day/year date ("3/14/99") into a sortable key ("19990314").
// Month and day get a leading "0" when one character long. A year below 81
// gets "20" before it, any other "19", whatever its length: "80" gives 2080,
// "81" 1981, and a four-digit "2000" becomes "192000" (a ten-character key),
// which is how the keys of existing catalogues were made.
QString DateToSortKey(const QString &date);

// A file's last-modified moment as the system prints a date and time in
// month/day/year form: "3/14/99 10:23:45 AM", the year in two digits; a moment
// at exactly midnight prints as the date alone. Split at its first blank, the
// date part feeds DateToSortKey and the rest is the entry's Time.
QString fileDateText(const QDateTime &moment);

// The date and time parts of fileDateText() for the file at path, ready for
// FileTable's Date (sort key) and Time fields. False when the file cannot be
// read (gone, no permission); the parts are then empty.
bool fileDateFields(const QString &path, QString *date, QString *time);

// The full name of an entry's file: location, then "/" unless the trimmed
// location is the root "/", then the file name. The root rule keeps the
// separator from being doubled.
QString entryFullName(const QString &location, const QString &fileName);

// A full name split at its last "/": the folder ("/" for a file in the root)
// and the file name.
struct SplitName {
    QString folder;
    QString fileName;
};
SplitName splitFullName(const QString &path);

// The last component of a folder: the keyword a batch add gives its entries.
// Empty for the root.
QString folderKeyword(const QString &folder);

// YYYYMMDD rearranged for display as month/day/year ("03/14/1999"); the
// entry window shows a file's Date this way.
QString sortKeyToDisplayDate(const QString &key);

} // namespace tarnby::organizer
