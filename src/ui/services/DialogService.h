#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QWidget;

namespace tarnby::ui {

enum class DialogKind { OpenFile, SaveFile, Folder, Color, Font, Choice, Text };

struct DialogRequest {
    DialogKind kind = DialogKind::OpenFile;
    QString title;
    QString directory;
    QString fileName;
    // The filter in the program's own form, "description|patterns|...".
    QString filter;
    int filterIndex = 0;
    QString defaultSuffix;
    bool confirmOverwrite = true;
    // Saving a picture: the bits per pixel to offer (none: no choice) and
    // the one preset, and whether a quality (1 to 100) is asked, preset.
    QList<int> bitsPerPixelChoices;
    int bitsPerPixel = 0;
    bool offerQuality = false;
    int quality = 0;
    QColor color;
    QFont font;
    // Choice: one of items, under label; current is chosen at first.
    QString label;
    QStringList items;
    int current = 0;
    // Text: a line typed under label, text offered at first.
    QString text;
    // Called with the dialog before it is shown, for what the caller gives
    // its own windows (an object name, the window colours).
    std::function<void(QDialog &)> prepare;
};

struct DialogAnswer {
    bool accepted = false;
    QString path;       // file and folder dialogs
    int filterIndex = 0; // the filter chosen, counting from 0
    int bitsPerPixel = 0; // picture saves: the depth chosen (0: the picture's own)
    int quality = 0;      // picture saves: the quality chosen (0: the format's default)
    QColor color;
    QFont font;
    int index = -1; // Choice: the item chosen
    QString text;   // Text: the line as typed
};

// Every file, folder, colour, font, choice and text dialog goes through here. With a
// responder set, no dialog is shown: tests answer through it.
class DialogService
{
public:
    using Responder = std::function<DialogAnswer(const DialogRequest &)>;

    DialogAnswer run(const DialogRequest &request, QWidget *parent = nullptr);
    void setResponder(Responder responder) { m_responder = std::move(responder); }

private:
    Responder m_responder;
};

} // namespace tarnby::ui
