#include "ui/services/DialogService.h"

#include "core/catalogue/FileCatalogue.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFontDialog>

namespace tarnby::ui {

DialogAnswer DialogService::run(const DialogRequest &request, QWidget *parent)
{
    if (m_responder)
        return m_responder(request);

    DialogAnswer answer;
    switch (request.kind) {
    case DialogKind::OpenFile:
    case DialogKind::SaveFile: {
        QFileDialog dialog(parent, request.title, request.directory);
        dialog.setAcceptMode(request.kind == DialogKind::SaveFile ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        dialog.setFileMode(request.kind == DialogKind::SaveFile ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
        if (!request.confirmOverwrite)
            dialog.setOption(QFileDialog::DontConfirmOverwrite);
        const QStringList filters = catalogue::dialogFilterToQt(request.filter).split(QStringLiteral(";;"), Qt::SkipEmptyParts);
        if (!filters.isEmpty()) {
            dialog.setNameFilters(filters);
            dialog.selectNameFilter(filters.value(request.filterIndex, filters.first()));
        }
        if (!request.defaultSuffix.isEmpty())
            dialog.setDefaultSuffix(request.defaultSuffix);
        if (!request.fileName.isEmpty())
            dialog.selectFile(request.fileName);
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
            answer.accepted = true;
            answer.path = dialog.selectedFiles().constFirst();
            answer.filterIndex = std::max<qsizetype>(0, filters.indexOf(dialog.selectedNameFilter()));
        }
        break;
    }
    case DialogKind::Folder:
        answer.path = QFileDialog::getExistingDirectory(parent, request.title, request.directory);
        answer.accepted = !answer.path.isEmpty();
        break;
    case DialogKind::Color: {
        const QColor c = QColorDialog::getColor(request.color, parent, request.title);
        answer.accepted = c.isValid();
        answer.color = c;
        break;
    }
    case DialogKind::Font: {
        bool ok = false;
        answer.font = QFontDialog::getFont(&ok, request.font, parent, request.title);
        answer.accepted = ok;
        break;
    }
    }
    return answer;
}

} // namespace tarnby::ui
