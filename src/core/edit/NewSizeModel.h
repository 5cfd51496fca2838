#pragma once

#include <QSize>
#include <QString>

// The logic of the resize dialog (NewSize1), without its controls: the
// ranges of the width and height, the text boxes and scroll bars kept in
// step, the kept aspect ratio and the results.
//
// The picture (or, in region resize mode, the selected region) has the size
// given to init(). Width runs from 1 to 16384; height from 1 to 16384 times
// the picture's height divided by its width, at most 32767. Typing a value
// that is empty, not a number or out of range changes nothing.
namespace tarnby::edit {

class NewSizeModel
{
public:
    static constexpr int MaxWidth = 16384;
    static constexpr int MaxHeightCap = 32767;

    // Starts with the picture's own size; keep-aspect and resample off.
    void init(QSize picture);

    int width() const { return m_width; }
    int height() const { return m_height; }
    int maxWidth() const { return MaxWidth; }
    int maxHeight() const { return m_maxHeight; }
    bool keepAspect() const { return m_keepAspect; }
    bool resample() const { return m_resample; }

    // Text typed into the width or height box. True when the values changed
    // (the scroll bars and the other box then show width() and height()).
    bool typeWidth(const QString &text);
    bool typeHeight(const QString &text);
    // A scroll bar moved to value (already within its range).
    void scrollWidth(int value);
    void scrollHeight(int value);
    // Checking keep-aspect recomputes the height from the width.
    void setKeepAspect(bool keep);
    void setResample(bool resample) { m_resample = resample; }

private:
    void widthChanged(int value);
    void heightChanged(int value);

    QSize m_picture;
    int m_width = 1;
    int m_height = 1;
    int m_maxHeight = 1;
    bool m_keepAspect = false;
    bool m_resample = false;
};

} // namespace tarnby::edit
