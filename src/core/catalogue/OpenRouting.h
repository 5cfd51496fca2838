#pragma once

#include "core/catalogue/FileCatalogue.h"

namespace tarnby {

// Where the browser sends a file it opens.
enum class OpenRoute {
    Nothing,     // no extension: nothing opens
    Player,      // sound, music, video, CD tracks and play lists
    Unzip,       // the offer to unpack a ZIP archive
    Viewer,      // a document window in the viewing frame
    Unsupported, // "File Type is not Supported by this Software"
};

OpenRoute routeForOpen(const catalogue::FileType &type);

// The extensions that the player takes: WAV, MID, RMI, AVI, MPG, MOV, MP3,
// M3U, DAT, CDA and ASX.
bool isPlayerExtension(const QString &ext);

} // namespace tarnby
