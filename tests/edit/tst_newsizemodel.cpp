#include "core/edit/NewSizeModel.h"

#include <QTest>

using tarnby::edit::NewSizeModel;

class TestNewSizeModel : public QObject
{
    Q_OBJECT

private slots:
    void heightRange_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<int>("maxHeight");
        QTest::newRow("1000 by 3000: 49152 capped at 32767") << QSize(1000, 3000) << 32767;
        QTest::newRow("1000 by 750: 16384 x 0.75") << QSize(1000, 750) << 12288;
        QTest::newRow("square") << QSize(640, 640) << 16384;
        QTest::newRow("a thin strip still reaches 1") << QSize(30000, 1) << 1;
    }
    void heightRange()
    {
        QFETCH(QSize, picture);
        QFETCH(int, maxHeight);
        NewSizeModel model;
        model.init(picture);
        QCOMPARE(model.maxHeight(), maxHeight);
        QCOMPARE(model.maxWidth(), 16384);
    }

    void typing_data()
    {
        QTest::addColumn<bool>("keepAspect");
        QTest::addColumn<QString>("widthText");
        QTest::addColumn<QString>("heightText");
        QTest::addColumn<QSize>("result");
        // A 1000 by 750 picture throughout.
        QTest::newRow("keep aspect: 333 wide gives 250 high (249.75)") << true << "333" << QString() << QSize(333, 250);
        QTest::newRow("keep aspect: 100 high gives 133 wide (133.3)") << true << QString() << "100" << QSize(133, 100);
        QTest::newRow("free: width alone") << false << "333" << QString() << QSize(333, 750);
        QTest::newRow("empty width ignored") << true << "" << QString() << QSize(1000, 750);
        QTest::newRow("width 0 ignored") << true << "0" << QString() << QSize(1000, 750);
        QTest::newRow("width beyond 16384 ignored") << true << "16385" << QString() << QSize(1000, 750);
        QTest::newRow("height beyond its maximum ignored") << false << QString() << "12289" << QSize(1000, 750);
        QTest::newRow("not a number ignored") << true << "12a" << QString() << QSize(1000, 750);
        QTest::newRow("largest width, height follows") << true << "16384" << QString() << QSize(16384, 12288);
    }
    void typing()
    {
        QFETCH(bool, keepAspect);
        QFETCH(QString, widthText);
        QFETCH(QString, heightText);
        QFETCH(QSize, result);
        NewSizeModel model;
        model.init(QSize(1000, 750));
        QCOMPARE(QSize(model.width(), model.height()), QSize(1000, 750));
        model.setKeepAspect(keepAspect);
        if (!widthText.isNull())
            model.typeWidth(widthText);
        if (!heightText.isNull())
            model.typeHeight(heightText);
        QCOMPARE(QSize(model.width(), model.height()), result);
    }

    void checkingKeepAspectRecomputesTheHeight()
    {
        NewSizeModel model;
        model.init(QSize(1000, 750));
        QVERIFY(model.typeWidth(QStringLiteral("500")));
        QVERIFY(model.typeHeight(QStringLiteral("100")));
        QCOMPARE(QSize(model.width(), model.height()), QSize(500, 100));
        model.setKeepAspect(true);
        QCOMPARE(QSize(model.width(), model.height()), QSize(500, 375));
        model.scrollHeight(300);
        QCOMPARE(QSize(model.width(), model.height()), QSize(400, 300));
    }
};

QTEST_GUILESS_MAIN(TestNewSizeModel)
#include "tst_newsizemodel.moc"
