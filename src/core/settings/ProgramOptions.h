#pragma once

#include "core/settings/LineTable.h"

#include <QString>

#include <span>

// The program options: the shared values that the whole program reads, kept
// in "Options.INI" (34 lines) in the program folder, and the few options that
// have no line there, kept in "Options2.INI" beside it.
//
// Both files are described by the tables below; a default-constructed
// ProgramOptions holds the tables' defaults. Defaults are not delivered as
// files: on a first start seedSettingsFiles() (SettingsFiles.h) writes the
// files a program folder lacks from the tables, so the tables are the only
// place a default is written down.
namespace tarnby::settings {

// One member per line of "Options.INI", in line order, then the members kept
// in "Options2.INI". Lines that other windows own (geometry, panes, view
// style, network computer, line 33) are kept as text so that they round-trip
// exactly as they were read.
struct ProgramOptions {
    ProgramOptions(); // the tables' defaults

    // 1-4 browser window, 5-8 viewing frame geometry (twips). Lines 1 to 7
    // must hold numbers and are kept as written.
    QString browserLeft, browserTop, browserWidth, browserHeight;
    QString frameLeft, frameTop, frameWidth;
    qint32 frameHeight = 0;
    // 9-11 thumbnails: height and width in centimetres, colour depth as the
    // text of its list entry ("24 Bits").
    double thumbnailHeightCm = 0;
    double thumbnailWidthCm = 0;
    QString thumbnailBits;
    // 12-17 the browser's tree and list panes, kept as the browser stores them
    QString treePane1, treePane2, treePane3;
    QString listPane1, listPane2, listPane3;
    // 18 view style of the file list, kept as the browser stores it
    QString viewStyle;
    // 19, 20 search counts
    qint32 initialSearchCount = 0;
    qint32 nextSearchCount = 0;
    // 21-23 table browser: row height, menu text style (position of the
    // chosen RDMENU option, 0 to 4), grid text style "F", "R" or "I"
    qint16 tableRowHeight = 0;
    qint16 menuTextStyle = 0;
    QString browserTextStyle;
    // 24-28 e-mail
    QString fromAddress;
    QString webSiteAddress;
    QString toAddress1, toAddress2, toAddress3;
    // 29, 30
    bool boldType = false;
    bool gridLines = false;
    // 31 the quick tips start-up choice as the tips window keeps it
    // ("1": do not show tips at start-up)
    QString quickTipsAtStartup;
    // 32 network computer; empty when none was chosen
    QString networkComputer;
    // 33 a value of the browser window, kept as read
    QString browserValue33;
    // 34 show HTML and word-processor documents as plain text
    bool useTextDoc = false;

    // ---- "Options2.INI" ----
    // Width of the browser's folder tree, percent of the window (20 to 80).
    qint32 separatorPercent = 0;
    // The e-mail address list file; a bare name is below the program folder.
    QString addressBook;
    // The mail account that sending and receiving use. The passwords are not
    // here: they live in the desktop keyring (MailPasswords.h) and in no file.
    QString smtpHost;
    qint32 smtpPort = 0;
    QString smtpSecurity;     // "STARTTLS", "TLS" or "None"
    QString smtpUser;
    QString incomingProtocol; // "IMAP" or "POP3"
    QString incomingHost;
    qint32 incomingPort = 0;
    QString incomingSecurity; // "STARTTLS", "TLS" or "None"
    QString incomingUser;
    // The organizer's catalogue on a PostgreSQL server, shared by several
    // machines; with no host it is "FileTabl.MDB" in the program folder. The
    // password lives in the desktop keyring, like the mail passwords.
    QString organizerHost;
    qint32 organizerPort = 0;
    QString organizerDatabase;
    QString organizerUser;

    bool operator==(const ProgramOptions &) const = default;
};

inline constexpr int OptionsFileLineCount = 34;

std::span<const LineRow<ProgramOptions>> optionsFileTable();  // "Options.INI"
std::span<const LineRow<ProgramOptions>> moreOptionsTable();  // "Options2.INI"

inline const QString OptionsFileName = QStringLiteral("Options.INI");
inline const QString MoreOptionsFileName = QStringLiteral("Options2.INI");

// Reads both files from folder into options. What a file lacks or cannot give
// keeps the value options already holds (normally the default).
TableReadReport readProgramOptions(const QString &folder, ProgramOptions &options);

// Writes "Options.INI" (all 34 lines) and then "Options2.INI", each
// atomically. Returns false with a whole sentence in *error on the first file
// that cannot be written.
bool writeProgramOptions(const QString &folder, const ProgramOptions &options, QString *error);

// The bounds the options window enforces, in the order it checks them.
struct OptionBounds {
    static constexpr double ThumbnailMin = 0.5, ThumbnailMax = 5.5;
    static constexpr double SeparatorMin = 20, SeparatorMax = 80;
    static constexpr double InitialSearchMin = 2500, InitialSearchMax = 10000;
    static constexpr double NextSearchMin = 500, NextSearchMax = 2500;
    static constexpr int RowHeightMin = 250, RowHeightMax = 600;
};

// The entries of the thumbnail colour depth list, top to bottom.
QStringList thumbnailBitsChoices();

} // namespace tarnby::settings
