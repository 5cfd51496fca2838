#pragma once

#include <QString>

namespace tarnby::settings {

// The program options, one member per line of "Options.INI" in line order.
// Lines that other windows own (geometry, panes, view style, network computer,
// line 33) are kept as text so that they round-trip exactly as they were read.
struct ProgramOptions {
    // 1-4 browser window, 5-8 viewing frame geometry (twips)
    QString browserLeft, browserTop, browserWidth, browserHeight;
    QString frameLeft, frameTop, frameWidth;
    qint32 frameHeight = 0;
    // 9-11 thumbnails
    double thumbnailHeightCm = 2.5;
    double thumbnailWidthCm = 2.5;
    QString thumbnailBits = QStringLiteral("24 Bits");
    // 12-17 browser panes
    QString treePane1, treePane2, treePane3;
    QString listPane1, listPane2, listPane3;
    // 18 view style of the file list
    QString viewStyle;
    // 19, 20 search counts (folders, despite the captions)
    int initialSearchCount = 5000;
    int nextSearchCount = 500;
    // 21-23 table browser
    qint16 tableRowHeight = 300;
    qint16 menuTextStyle = 0;
    QString browserTextStyle = QStringLiteral("F");
    // 24-28 e-mail
    QString fromAddress;
    QString webSiteAddress;
    QString toAddress1, toAddress2, toAddress3;
    // 29, 30
    bool boldType = false;
    bool gridLines = false;
    // 31 quick tips at start-up
    QString quickTipsAtStartup;
    // 32 network computer
    QString networkComputer;
    // 33 a value of the browser window, kept as read
    QString browserValue33;
    // 34
    bool useTextDoc = false;
};

} // namespace tarnby::settings
