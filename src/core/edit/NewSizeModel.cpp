#include "NewSizeModel.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace tarnby::edit {

void NewSizeModel::init(QSize picture)
{
    m_picture = QSize(std::max(1, picture.width()), std::max(1, picture.height()));
    m_maxHeight = int(std::min<qint64>(MaxHeightCap, std::llround(double(MaxWidth) * m_picture.height() / m_picture.width())));
    m_maxHeight = std::max(1, m_maxHeight);
    m_width = std::clamp(m_picture.width(), 1, MaxWidth);
    m_height = std::clamp(m_picture.height(), 1, m_maxHeight);
    m_keepAspect = false;
    m_resample = false;
}

bool NewSizeModel::typeWidth(const QString &text)
{
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    if (!ok || value < 1 || value > MaxWidth)
        return false;
    widthChanged(value);
    return true;
}

bool NewSizeModel::typeHeight(const QString &text)
{
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    if (!ok || value < 1 || value > m_maxHeight)
        return false;
    heightChanged(value);
    return true;
}

void NewSizeModel::scrollWidth(int value)
{
    widthChanged(std::clamp(value, 1, MaxWidth));
}

void NewSizeModel::scrollHeight(int value)
{
    heightChanged(std::clamp(value, 1, m_maxHeight));
}

void NewSizeModel::setKeepAspect(bool keep)
{
    m_keepAspect = keep;
    if (keep)
        widthChanged(m_width);
}

// The other side follows the picture's proportions, rounded to the nearest
// pixel and kept within its scroll bar's range.
void NewSizeModel::widthChanged(int value)
{
    m_width = value;
    if (m_keepAspect)
        m_height = std::clamp(int(std::lround(double(value) * m_picture.height() / m_picture.width())), 1, m_maxHeight);
}

void NewSizeModel::heightChanged(int value)
{
    m_height = value;
    if (m_keepAspect)
        m_width = std::clamp(int(std::lround(double(value) * m_picture.width() / m_picture.height())), 1, MaxWidth);
}

} // namespace tarnby::edit
