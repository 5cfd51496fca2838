#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

namespace tarnby::ui {

// The organizer windows' data control: four move buttons around a caption
// that tells where the shown row stands. It keeps the position among count
// rows; a move past either end stays on the end row and says "End of File" or
// "Beginning of File", any other move shows the record position text.
// positionChanged() is emitted for every move, the end moves included.
class DataControl : public QFrame
{
    Q_OBJECT
public:
    explicit DataControl(QWidget *parent = nullptr);

    void setRecords(int count, int position);
    int count() const { return m_count; }
    int position() const { return m_position; }
    QString caption() const;
    void setCaption(const QString &caption);
    // Whether moves write the position text into the caption (the windows
    // do so only while editing).
    void setShowsPosition(bool shows) { m_showsPosition = shows; }
    // Whether the last move tried to go past the last row.
    bool pastEnd() const { return m_pastEnd; }

    void moveFirst();
    void movePrevious();
    void moveNext();
    void moveLast();

signals:
    void positionChanged(int position);

private:
    void moveTo(int position, const QString &pastEnd);

    QLabel *m_caption = nullptr;
    int m_count = 0;
    int m_position = 0;
    bool m_showsPosition = true;
    bool m_pastEnd = false;
};

} // namespace tarnby::ui
