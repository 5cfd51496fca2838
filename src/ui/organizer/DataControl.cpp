#include "ui/organizer/DataControl.h"

#include "core/organizer/OrganizerModels.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace tarnby::ui {

DataControl::DataControl(QWidget *parent)
    : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    auto button = [this, layout](const char *name, Qt::ArrowType arrow, void (DataControl::*slot)()) {
        auto *b = new QToolButton(this);
        b->setObjectName(QLatin1String(name));
        b->setArrowType(arrow);
        b->setAutoRaise(true);
        connect(b, &QToolButton::clicked, this, slot);
        layout->addWidget(b);
        return b;
    };
    button("FirstBtn", Qt::UpArrow, &DataControl::moveFirst);
    button("PreviousBtn", Qt::LeftArrow, &DataControl::movePrevious);
    m_caption = new QLabel(this);
    m_caption->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_caption, 1);
    button("NextBtn", Qt::RightArrow, &DataControl::moveNext);
    button("LastBtn", Qt::DownArrow, &DataControl::moveLast);
}

void DataControl::setRecords(int count, int position)
{
    m_count = count;
    m_position = count > 0 ? std::clamp(position, 0, count - 1) : 0;
    if (m_showsPosition && count > 0)
        setCaption(organizer::recordPositionCaption(m_position, m_count));
}

QString DataControl::caption() const
{
    return m_caption->text();
}

void DataControl::setCaption(const QString &caption)
{
    m_caption->setText(caption);
}

void DataControl::moveTo(int position, const QString &pastEnd)
{
    if (m_count <= 0)
        return;
    const bool past = position < 0 || position >= m_count;
    m_pastEnd = position >= m_count;
    m_position = std::clamp(position, 0, m_count - 1);
    if (m_showsPosition)
        setCaption(past ? pastEnd : organizer::recordPositionCaption(m_position, m_count));
    emit positionChanged(m_position);
}

void DataControl::moveFirst()
{
    moveTo(0, QString());
}

void DataControl::movePrevious()
{
    moveTo(m_position - 1, QStringLiteral("Beginning of File"));
}

void DataControl::moveNext()
{
    moveTo(m_position + 1, QStringLiteral("End of File"));
}

void DataControl::moveLast()
{
    moveTo(m_count - 1, QString());
}

} // namespace tarnby::ui
