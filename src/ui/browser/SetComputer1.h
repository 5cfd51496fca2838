#pragma once

#include <QDialog>
#include <QStringList>

class QLineEdit;
class QListWidget;

namespace tarnby::ui {

// "Set Computer in Network": choose the computer among the hosts of the
// network mounts, or type a host name. Controls: Label1 (the prompt), List1
// (the hosts), TxtComputer (the name), OKBtn, CancelBtn.
class SetComputer1 : public QDialog
{
    Q_OBJECT
public:
    static constexpr const char *Prompt =
        "Please Select your Computer Name on the Network - Cancel if you are not using a Computer Network.";

    SetComputer1(const QStringList &hosts, const QString &current, QWidget *parent = nullptr);

    // The name in the text box, trimmed.
    QString computerName() const;

private:
    QListWidget *m_list;
    QLineEdit *m_name;
};

} // namespace tarnby::ui
