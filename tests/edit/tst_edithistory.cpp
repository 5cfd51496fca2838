#include "core/edit/EditHistory.h"

#include <QTest>

using namespace tarnby::edit;

Q_DECLARE_METATYPE(tarnby::edit::EditOperation)

namespace {

QImage picture(int seed, QSize size = QSize(64, 48))
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb((x * 5 + seed) & 0xff, (y * 3 + seed * 7) & 0xff, (x * y + seed) & 0xff));
    return image;
}

// Runs an operation as the picture window does: record, then apply.
QImage perform(EditHistory &history, const QImage &current, const EditOperation &operation)
{
    history.record(current, operation);
    return apply(operation, current);
}

} // namespace

class TestEditHistory : public QObject
{
    Q_OBJECT

private slots:
    // A picture of several frames is undone as a whole, whether the step
    // holds the frames or only the operation; when one frame's format has
    // no exact inverse, the step keeps a copy of all of them.
    void severalFramesUndoneTogether_data()
    {
        QTest::addColumn<EditOperation>("operation");
        QTest::addColumn<bool>("secondFrameRgb888");
        QTest::addColumn<qint64>("bytesHeld");
        const qint64 frameBytes = picture(0).sizeInBytes();
        const qint64 rgb888Bytes = picture(0).convertToFormat(QImage::Format_RGB888).sizeInBytes();
        QTest::newRow("flip, by operation") << EditOperation::flip() << false << qint64(0);
        QTest::newRow("rotate 17.5, copies") << EditOperation::rotate(1750, RotateFit::Enlarge, 0) << false << 2 * frameBytes;
        QTest::newRow("invert, mixed formats") << EditOperation::invert() << true << frameBytes + rgb888Bytes;
    }
    void severalFramesUndoneTogether()
    {
        QFETCH(EditOperation, operation);
        QFETCH(bool, secondFrameRgb888);
        QFETCH(qint64, bytesHeld);
        EditHistory history;
        const QList<QImage> before{picture(1),
                                   secondFrameRgb888 ? picture(2).convertToFormat(QImage::Format_RGB888) : picture(2)};
        history.record(before, operation);
        const QList<QImage> after{apply(operation, before.at(0)), apply(operation, before.at(1))};
        QCOMPARE(history.bytesHeld(), bytesHeld);
        QCOMPARE(history.undo(after), before);
        QCOMPARE(history.redo(before), after);
    }

    void undoAndRedoRestoreExactPixels()
    {
        EditHistory history;
        const QImage original = picture(1);
        const QList<EditOperation> operations = {
            EditOperation::flip(),
            EditOperation::brightness(300),
            EditOperation::rotate(1750, RotateFit::Enlarge, qRgb(0, 0, 0)),
            EditOperation::invert(),
            EditOperation::resize(QSize(31, 17), Resampling::Smooth),
            EditOperation::rotate(9000, RotateFit::KeepSize, 0),
            EditOperation::stretch(),
        };
        QList<QImage> states = {original};
        for (const EditOperation &operation : operations)
            states << perform(history, states.last(), operation);
        QCOMPARE(history.undoCount(), operations.size());

        QImage current = states.last();
        for (qsizetype i = states.size() - 2; i >= 0; --i) {
            current = history.undo(current);
            QCOMPARE(current, states.at(i));
        }
        QVERIFY(!history.canUndo());
        QVERIFY(history.undo(current).isNull());
        for (qsizetype i = 1; i < states.size(); ++i) {
            current = history.redo(current);
            QCOMPARE(current, states.at(i));
        }
        QVERIFY(!history.canRedo());
    }

    void stepsThatUndoThemselvesHoldNoPicture()
    {
        EditHistory history;
        QImage current = picture(2);
        current = perform(history, current, EditOperation::flip());
        current = perform(history, current, EditOperation::reverse());
        current = perform(history, current, EditOperation::invert());
        current = perform(history, current, EditOperation::rotate(27000, RotateFit::KeepSize, 0));
        QCOMPARE(history.bytesHeld(), 0);
        current = perform(history, current, EditOperation::contrast(100));
        QCOMPARE(history.bytesHeld(), current.sizeInBytes());
    }

    void newStepDropsRedo()
    {
        EditHistory history;
        QImage current = perform(history, picture(3), EditOperation::brightness(50));
        current = history.undo(current);
        QVERIFY(history.canRedo());
        current = perform(history, current, EditOperation::contrast(50));
        QVERIFY(!history.canRedo());
        QCOMPARE(history.undoCount(), 1);
    }

    void drawingsAreKeptAsPictures()
    {
        EditHistory history;
        const QImage before = picture(4);
        QImage after = before.copy();
        after.setPixel(3, 3, qRgb(1, 2, 3));
        history.recordChange(before);
        QCOMPARE(history.undo(after), before);
        QCOMPARE(history.redo(before), after);
    }

    void boundDropsOldestSteps_data()
    {
        QTest::addColumn<int>("stepsThatFit");
        QTest::newRow("room for one") << 1;
        QTest::newRow("room for three") << 3;
        QTest::newRow("room for none") << 0;
    }
    void boundDropsOldestSteps()
    {
        QFETCH(int, stepsThatFit);
        const qint64 stepBytes = picture(0).sizeInBytes();
        EditHistory history(stepBytes * stepsThatFit + stepBytes / 2);
        QList<QImage> states = {picture(5)};
        for (int i = 0; i < 5; ++i)
            states << perform(history, states.last(), EditOperation::brightness(10 + i));
        QCOMPARE(history.undoCount(), stepsThatFit);
        QVERIFY(history.bytesHeld() <= stepBytes * stepsThatFit + stepBytes / 2);
        QImage current = states.last();
        for (int i = 0; i < stepsThatFit; ++i)
            current = history.undo(current);
        QCOMPARE(current, states.at(states.size() - 1 - stepsThatFit));
        // Redo still reaches the newest picture: the bound holds both ways.
        while (history.canRedo())
            current = history.redo(current);
        QCOMPARE(current, states.last());
    }
};

QTEST_GUILESS_MAIN(TestEditHistory)
#include "tst_edithistory.moc"
