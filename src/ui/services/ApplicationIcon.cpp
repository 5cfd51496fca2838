#include "ui/services/ApplicationIcon.h"

#include <QDirIterator>

namespace tarnby::ui {

QIcon applicationIcon()
{
    // The build renders one PNG per size into the resources (no SVG plugin is
    // needed at run time); addFile() reads each one's size from the file.
    QIcon icon;
    QDirIterator sizes(QStringLiteral(":/icons/hicolor"), {QStringLiteral("tarnby.png")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (sizes.hasNext())
        icon.addFile(sizes.next());
    return icon;
}

} // namespace tarnby::ui
