#include "ui/services/DialogService.h"

#include "core/catalogue/FileCatalogue.h"

#include <QColorDialog>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QInputDialog>

#include <algorithm>

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
        // A picture's depth and quality are chosen in the same dialog, below
        // the file name.
        QComboBox *bits = nullptr;
        QSpinBox *quality = nullptr;
        if (request.kind == DialogKind::SaveFile && (!request.bitsPerPixelChoices.isEmpty() || request.offerQuality)) {
            dialog.setOption(QFileDialog::DontUseNativeDialog);
            if (auto *grid = qobject_cast<QGridLayout *>(dialog.layout())) {
                auto *row = new QHBoxLayout;
                if (!request.bitsPerPixelChoices.isEmpty()) {
                    bits = new QComboBox(&dialog);
                    bits->setObjectName(QStringLiteral("CMBBITS"));
                    for (int depth : request.bitsPerPixelChoices)
                        bits->addItem(QString::number(depth), depth);
                    bits->setCurrentIndex(std::max<int>(0, bits->findData(request.bitsPerPixel)));
                    auto *label = new QLabel(QStringLiteral("Bits per Pixel:"), &dialog);
                    label->setBuddy(bits);
                    row->addWidget(label);
                    row->addWidget(bits);
                }
                if (request.offerQuality) {
                    quality = new QSpinBox(&dialog);
                    quality->setObjectName(QStringLiteral("TxtQuality"));
                    quality->setRange(1, 100);
                    quality->setValue(request.quality > 0 ? request.quality : 75);
                    quality->setToolTip(QStringLiteral("Lower values give smaller files of lower quality"));
                    auto *label = new QLabel(QStringLiteral("Quality:"), &dialog);
                    label->setBuddy(quality);
                    row->addSpacing(12);
                    row->addWidget(label);
                    row->addWidget(quality);
                }
                row->addStretch(1);
                grid->addLayout(row, grid->rowCount(), 0, 1, grid->columnCount());
            }
        }
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
            answer.accepted = true;
            answer.path = dialog.selectedFiles().constFirst();
            answer.filterIndex = std::max<qsizetype>(0, filters.indexOf(dialog.selectedNameFilter()));
            answer.bitsPerPixel = bits ? bits->currentData().toInt() : 0;
            answer.quality = quality ? quality->value() : 0;
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
    case DialogKind::Choice: {
        if (request.items.isEmpty())
            break;
        QInputDialog dialog(parent);
        dialog.setWindowTitle(request.title);
        dialog.setLabelText(request.label);
        dialog.setComboBoxItems(request.items);
        dialog.setComboBoxEditable(false);
        dialog.setTextValue(request.items.value(request.current, request.items.constFirst()));
        // Items may repeat: the position is taken from the list box itself.
        auto *box = dialog.findChild<QComboBox *>();
        if (box)
            box->setCurrentIndex(std::clamp(request.current, 0, int(request.items.size()) - 1));
        if (dialog.exec() == QDialog::Accepted) {
            answer.accepted = true;
            answer.index = box ? box->currentIndex() : int(request.items.indexOf(dialog.textValue()));
        }
        break;
    }
    case DialogKind::Text: {
        QInputDialog dialog(parent);
        if (request.prepare)
            request.prepare(dialog);
        dialog.setWindowTitle(request.title);
        dialog.setLabelText(request.label);
        dialog.setTextValue(request.text);
        if (dialog.exec() == QDialog::Accepted) {
            answer.accepted = true;
            answer.text = dialog.textValue();
        }
        break;
    }
    }
    return answer;
}

} // namespace tarnby::ui
