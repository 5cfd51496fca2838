#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QDialog>

#include <optional>

class QLineEdit;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The two find windows: a file name or a keyword, and OK finds the nearest
// entry (the first whose field is equal to the text or sorts after it) for
// the window that opened it to move to. GrpFind1 serves the file entry
// window, GrpFind2 the group browser; they differ only in caption.
class GroupFindWindow : public QDialog
{
    Q_OBJECT
public:
    QLineEdit *fileNameBox() const { return m_name; }
    QLineEdit *keywordBox() const { return m_keyword; }
    // After OK: the entry found, and the field it was found by.
    std::optional<organizer::FileEntry> found() const { return m_found; }
    organizer::FindField field() const { return m_field; }
    void okClicked();

protected:
    GroupFindWindow(const char *name, const QString &caption, AppState &state, UiServices &services,
                    const organizer::OrganizerStore &store, QWidget *parent);

private:
    UiServices &m_services;
    organizer::OrganizerStore m_store;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_keyword = nullptr;
    std::optional<organizer::FileEntry> m_found;
    organizer::FindField m_field = organizer::FindField::FileName;
};

class GrpFind1 : public GroupFindWindow
{
    Q_OBJECT
public:
    GrpFind1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr)
        : GroupFindWindow("GrpFind1", QStringLiteral("Find File in Group Table"), state, services, store, parent)
    {
    }
};

class GrpFind2 : public GroupFindWindow
{
    Q_OBJECT
public:
    GrpFind2(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr)
        : GroupFindWindow("GrpFind2", QStringLiteral("Find Files in File List"), state, services, store, parent)
    {
    }
};

} // namespace tarnby::ui
