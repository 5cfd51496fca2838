#include "ui/browser/SetComputer1.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

SetComputer1::SetComputer1(const QStringList &hosts, const QString &current, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
    , m_name(new QLineEdit(this))
{
    setObjectName(QStringLiteral("SetComputer1"));
    setWindowTitle(QStringLiteral("Set Computer in Network"));
    auto *layout = new QVBoxLayout(this);
    auto *label = new QLabel(QLatin1String(Prompt), this);
    label->setObjectName(QStringLiteral("Label1"));
    label->setWordWrap(true);
    layout->addWidget(label);

    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(QStringLiteral("Computers whose folders are mounted on this one"));
    m_list->addItems(hosts);
    layout->addWidget(m_list, 1);

    m_name->setObjectName(QStringLiteral("TxtComputer"));
    m_name->setToolTip(QStringLiteral("Name of your Computer on the Network"));
    m_name->setText(current);
    layout->addWidget(m_name);

    auto *buttons = new QHBoxLayout;
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);

    connect(m_list, &QListWidget::currentTextChanged, m_name, &QLineEdit::setText);
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

QString SetComputer1::computerName() const
{
    return m_name->text().trimmed();
}

} // namespace tarnby::ui
