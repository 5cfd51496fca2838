#include "UiFixture.h"
#include "core/catalogue/CommandKeys.h"
#include "core/edit/OverlayCatalogues.h"
#include "core/edit/ShapeDrawing.h"
#include "ui/edit/AddShape1.h"
#include "ui/edit/AddText1.h"
#include "ui/edit/OverlayHost.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// A picture window as the dialogs see it: its members, the pointer and the
// frame's checks, recorded.
class HostDouble : public OverlayHost
{
public:
    edit::OverlayMembers members;
    bool crossPointer = false;
    QHash<QString, bool> checks;
    bool shutOffDuringChecks = true;

    edit::OverlayMembers &overlayMembers() override { return members; }
    void setPlacementPointer(bool waiting) override { crossPointer = waiting; }
    void setFrameCheck(const QString &key, bool checked) override
    {
        checks.insert(key, checked);
        shutOffDuringChecks = shutOffDuringChecks && members.SHUTOFFCLICK_FLG;
    }
    QString helpFolder() const override { return {}; }
};

QPushButton *button(QWidget *dialog, const char *name)
{
    auto *b = dialog->findChild<QPushButton *>(QLatin1String(name));
    if (!b)
        qWarning("no button %s", name);
    return b;
}

DialogAnswer colourAnswer(QRgb colour)
{
    DialogAnswer answer;
    answer.accepted = true;
    answer.color = QColor::fromRgb(colour);
    return answer;
}

} // namespace

class TestOverlayDialogs : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_ui = std::make_unique<UiFixture>(); }
    void cleanup() { m_ui.reset(); }

    void textDialogControls()
    {
        HostDouble host;
        AddText1 dialog(host, m_ui->services);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Add Text to Image"));
        QCOMPARE(dialog.findChild<QLineEdit *>("Text1")->toolTip(), QStringLiteral("Enter Text to Place on Image"));
        QCOMPARE(button(&dialog, "RectClrBtn")->toolTip(), QStringLiteral("Select Color of Rectangle Background"));
        QCOMPARE(button(&dialog, "OKBtn")->toolTip(), QStringLiteral("Select Text to Place on Image"));
        QCOMPARE(button(&dialog, "CancelBtn")->toolTip(), QStringLiteral("Close Text Selection Window without Drawing Text"));
        QCOMPARE(button(&dialog, "HelpBtn")->toolTip(), QStringLiteral("Help with Text Selection Window"));
        for (const char *name : {"FontBtn", "TextClrBtn", "ShadClrBtn", "HiLiteClrBtn"})
            QVERIFY(button(&dialog, name));
        QVERIFY(dialog.findChild<QCheckBox *>("CHKRECTANGLE"));
        QStringList samples;
        for (const QLabel *label : dialog.findChildren<QLabel *>("Label1"))
            samples << label->text();
        QVERIFY(samples.contains(QStringLiteral("HiLite Color Example")));

        // The list: the 13 effects in their order, each with its code.
        const QListWidget *list = dialog.findChild<QListWidget *>("List1");
        QCOMPARE(list->count(), 13);
        QStringList names;
        QList<int> codes;
        for (int i = 0; i < list->count(); ++i) {
            names << list->item(i)->text();
            codes << list->item(i)->data(Qt::UserRole).toInt();
        }
        QCOMPARE(names.first(), QStringLiteral("TEXTSTYLE_BLOCKSHADOW"));
        QCOMPARE(names.at(6), QStringLiteral("TEXTSTYLE_MAX"));
        QCOMPARE(names.last(), QStringLiteral("TEXTSTYLE_RAISEDLIGHT"));
        QCOMPARE(codes, (QList<int>{6, 5, 9, 8, 2, 1, 11, 0, 7, 11, 10, 4, 3}));
        QVERIFY(dialog.findChild<QGroupBox *>()->title() == QStringLiteral("Select Text Style"));
    }

    // Opening shows the members; a text still waiting from before waits no
    // longer.
    void textDialogOpensOnTheMembers()
    {
        HostDouble host;
        host.members.DRAW_TEXT = QStringLiteral("kept");
        host.members.TEXTSTYLE_INDEX = 9;
        host.members.TEXTRECTANGLE_FLG = true;
        host.members.PLACETEXT_FLG = true;
        AddText1 dialog(host, m_ui->services);
        QCOMPARE(dialog.text()->text(), QStringLiteral("kept"));
        QCOMPARE(dialog.styles()->currentRow(), 9);
        QVERIFY(dialog.findChild<QCheckBox *>("CHKRECTANGLE")->isChecked());
        QVERIFY(!host.members.PLACETEXT_FLG);
    }

    void textColourDialogs_data()
    {
        QTest::addColumn<QString>("buttonName");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("member");
        QTest::newRow("text") << "TextClrBtn" << "Select Color for Text" << 0;
        QTest::newRow("shadow") << "ShadClrBtn" << "Select Color for Text Shadow" << 1;
        QTest::newRow("highlight") << "HiLiteClrBtn" << "Select Color for Text HiLite" << 2;
        QTest::newRow("rectangle borrows the highlight's title") << "RectClrBtn" << "Select Color for Text HiLite" << 3;
    }
    void textColourDialogs()
    {
        QFETCH(QString, buttonName);
        QFETCH(QString, title);
        QFETCH(int, member);
        HostDouble host;
        QRgb *const members[] = {&host.members.TEXT_COLOR, &host.members.TEXTSHADOW_COLOR,
                                 &host.members.TEXTHIGHLIGHT_COLOR, &host.members.TEXTRECTANGLE_COLOR};
        *members[member] = qRgb(1, 2, 3);
        AddText1 dialog(host, m_ui->services);
        // Cancelled: the member keeps its colour.
        m_ui->responder.cancelDialog();
        button(&dialog, buttonName.toLatin1().constData())->click();
        QCOMPARE(*members[member], qRgb(1, 2, 3));
        m_ui->responder.answerDialog(colourAnswer(qRgb(10, 200, 30)));
        button(&dialog, buttonName.toLatin1().constData())->click();
        QCOMPARE(m_ui->responder.dialogs().size(), 2);
        const DialogRequest &request = m_ui->responder.dialogs().last();
        QCOMPARE(request.kind, DialogKind::Color);
        QCOMPARE(request.title, title);
        QCOMPARE(request.color, QColor(1, 2, 3)); // preset with the member
        QCOMPARE(*members[member], qRgb(10, 200, 30));
        for (int other = 0; other < 4; ++other)
            if (other != member)
                QVERIFY(*members[other] != qRgb(10, 200, 30));
    }

    void textFontDialog()
    {
        HostDouble host;
        host.members.TEXT_FONT = QApplication::font().family();
        host.members.TEXT_FONT_SIZE = 12;
        AddText1 dialog(host, m_ui->services);
        DialogAnswer answer;
        answer.accepted = true;
        answer.font = QApplication::font();
        answer.font.setPointSizeF(31);
        answer.font.setBold(true);
        answer.font.setItalic(true);
        m_ui->responder.answerDialog(answer);
        button(&dialog, "FontBtn")->click();
        QCOMPARE(m_ui->responder.dialogs().last().kind, DialogKind::Font);
        QCOMPARE(m_ui->responder.dialogs().last().font.pointSizeF(), 12.0);
        QCOMPARE(host.members.TEXT_FONT_SIZE, 31.0f);
        QVERIFY(host.members.TEXT_FONT_BOLD);
        QVERIFY(host.members.TEXT_FONT_ITALIC);
        QCOMPARE(dialog.sample(3)->font().pointSizeF(), 31.0);
    }

    void textOkSetsTheMembers_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("TEXTSTYLE_MAX") << 6 << 11 << "Max";
        QTest::newRow("TEXTSTYLE_RAISEDEXTRAHEAVY") << 9 << 11 << "Heavy";
        QTest::newRow("TEXTSTYLE_NORMAL, empty text") << 7 << 0 << "";
    }
    void textOkSetsTheMembers()
    {
        QFETCH(int, row);
        QFETCH(int, code);
        QFETCH(QString, text);
        HostDouble host;
        AddText1 dialog(host, m_ui->services);
        dialog.text()->setText(text);
        dialog.styles()->setCurrentRow(row);
        dialog.findChild<QCheckBox *>("CHKRECTANGLE")->setChecked(true);
        button(&dialog, "OKBtn")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const edit::OverlayMembers &m = host.members;
        QVERIFY(m.PLACETEXT_FLG);
        QCOMPARE(m.DRAW_TEXT, text);
        QCOMPARE(m.TEXT_STYLE, code);
        QCOMPARE(m.TEXTSTYLE_INDEX, qint16(row));
        QVERIFY(m.TEXTRECTANGLE_FLG);
        QCOMPARE(m.DRAWMENU, QStringLiteral("Text"));
        QVERIFY(m.DRAW_NOW_FLG);
        QVERIFY(host.crossPointer);
    }

    // Cancel (its button, Escape) ends the wait and clears the frame's
    // checks, with SHUTOFFCLICK_FLG set while it does.
    void cancelClearsTheChecks_data()
    {
        QTest::addColumn<bool>("shape");
        QTest::addColumn<bool>("escape");
        QTest::newRow("text, Cancel") << false << false;
        QTest::newRow("text, Escape") << false << true;
        QTest::newRow("shape, Cancel") << true << false;
        QTest::newRow("shape, Escape") << true << true;
    }
    void cancelClearsTheChecks()
    {
        QFETCH(bool, shape);
        QFETCH(bool, escape);
        HostDouble host;
        host.members.DRAW_NOW_FLG = true;
        host.crossPointer = true;
        std::unique_ptr<QDialog> dialog;
        if (shape)
            dialog = std::make_unique<AddShape1>(host, m_ui->services);
        else
            dialog = std::make_unique<AddText1>(host, m_ui->services);
        if (escape)
            dialog->reject();
        else
            button(dialog.get(), "CancelBtn")->click();
        QCOMPARE(dialog->result(), int(QDialog::Rejected));
        QVERIFY(!host.members.DRAW_NOW_FLG);
        QVERIFY(!host.members.SHUTOFFCLICK_FLG);
        QVERIFY(!host.crossPointer);
        QVERIFY(host.shutOffDuringChecks);
        const QStringList keys = shape ? QStringList{QString(commands::keys::mnuAddShapestoPictures), QString(commands::keys::ShapesBtn)}
                                       : QStringList{QString(commands::keys::mnuAddTexttoPictures), QString(commands::keys::FontBtn)};
        QCOMPARE(host.checks.size(), 2);
        for (const QString &key : keys)
            QCOMPARE(host.checks.value(key, true), false);
    }

    void shapeDialogControls()
    {
        HostDouble host;
        AddShape1 dialog(host, m_ui->services);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Add Shape to Image"));
        QCOMPARE(dialog.shapes()->toolTip(), QStringLiteral("Select Shape to place on Image"));
        QCOMPARE(button(&dialog, "ShapeClrBtn")->toolTip(), QStringLiteral("Select Color for Shape"));
        QCOMPARE(button(&dialog, "BorderClrBtn")->toolTip(), QStringLiteral("Select Color for Shape Border"));
        QCOMPARE(button(&dialog, "OKBtn")->toolTip(), QStringLiteral("Select Shape to Place on Image"));
        QCOMPARE(button(&dialog, "HelpBtn")->toolTip(), QStringLiteral("Help with Shape Selection Window"));
        QCOMPARE(dialog.outerOption(0)->text(), QStringLiteral("Raised"));
        QCOMPARE(dialog.outerOption(0)->toolTip(), QStringLiteral("Raise Outer Line on Shape"));
        QCOMPARE(dialog.outerOption(1)->toolTip(), QStringLiteral("Indent Outer Line on Shape"));
        QCOMPARE(dialog.innerOption(0)->text(), QStringLiteral("Indent"));
        QCOMPARE(dialog.innerOption(0)->toolTip(), QStringLiteral("Indent Inner Line on Shape"));
        QCOMPARE(dialog.innerOption(1)->toolTip(), QStringLiteral("Raise Inner Line on Shape"));
        QStringList frames;
        for (const QGroupBox *box : dialog.findChildren<QGroupBox *>("Frame2"))
            frames << box->title();
        QCOMPARE(frames, (QStringList{"Outer Band Style", " Inner Band Style"}));
        QVERIFY(dialog.findChild<QLabel *>("Image1"));

        const QListWidget *list = dialog.shapes();
        QCOMPARE(list->count(), 91);
        const auto catalogue = edit::shapes();
        for (int i = 0; i < list->count(); ++i) {
            QCOMPARE(list->item(i)->text(), QString::fromLatin1(catalogue[i].name));
            QCOMPARE(list->item(i)->data(Qt::UserRole).toInt(), catalogue[i].code);
        }
        QCOMPARE(list->item(29)->text(), QStringLiteral("CIRCLE_MAX"));
        QCOMPARE(list->item(29)->data(Qt::UserRole).toInt(), 7012);
        QCOMPARE(list->item(62)->data(Qt::UserRole).toInt(), 6005);

        m_ui->responder.answerDialog(colourAnswer(qRgb(0, 0, 255)));
        button(&dialog, "ShapeClrBtn")->click();
        m_ui->responder.answerDialog(colourAnswer(qRgb(0, 255, 0)));
        button(&dialog, "BorderClrBtn")->click();
        QCOMPARE(m_ui->responder.dialogs().size(), 2);
        for (const DialogRequest &request : m_ui->responder.dialogs())
            QCOMPARE(request.title, QStringLiteral("Select Color for Object"));
        QCOMPARE(host.members.SHAPE_COLOR, qRgb(0, 0, 255));
        QCOMPARE(host.members.SHAPEBORDER_COLOR, qRgb(0, 255, 0));
    }

    // The size boxes count in units of 3.5 and show the integer part.
    void shapeSizeBoxes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("units");
        QTest::addColumn<QString>("shownAgain");
        QTest::newRow("10 is 35") << "10" << 35.0 << "10";
        QTest::newRow("3 is 10.5") << "3" << 10.5 << "3";
        QTest::newRow("2.9 shows 2") << "2.9" << 2.9 * 3.5 << "2";
        QTest::newRow("leading number only") << " 12abc" << 42.0 << "12";
        QTest::newRow("not a number is 0") << "abc" << 0.0 << "0";
        QTest::newRow("empty is 0") << "" << 0.0 << "0";
    }
    void shapeSizeBoxes()
    {
        QFETCH(QString, typed);
        QFETCH(double, units);
        QFETCH(QString, shownAgain);
        HostDouble host;
        {
            AddShape1 dialog(host, m_ui->services);
            dialog.sizeBox(0)->setText(typed);
            QCOMPARE(host.members.SHAPE_HEIGHT, units); // stored as typed, before OK
            dialog.sizeBox(1)->setText(QStringLiteral("7"));
            QCOMPARE(host.members.SHAPE_WIDTH, 24.5);
            button(&dialog, "OKBtn")->click();
            QCOMPARE(host.members.SHAPE_HEIGHT, units);
        }
        AddShape1 again(host, m_ui->services);
        QCOMPARE(again.sizeBox(0)->text(), shownAgain);
        QCOMPARE(again.sizeBox(1)->text(), QStringLiteral("7"));
    }

    void shapeOkSetsTheMembers_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("inner");
        QTest::addColumn<int>("outer");
        QTest::newRow("CIRCLE_MAX, inner first, outer third") << 29 << 0 << 2;
        QTest::newRow("REGION, inner second, outer first") << 62 << 1 << 0;
        QTest::newRow("STAR5, inner third, outer second") << 71 << 2 << 1;
    }
    void shapeOkSetsTheMembers()
    {
        QFETCH(int, row);
        QFETCH(int, inner);
        QFETCH(int, outer);
        HostDouble host;
        AddShape1 dialog(host, m_ui->services);
        dialog.shapes()->setCurrentRow(row);
        dialog.innerOption(inner)->setChecked(true);
        dialog.outerOption(outer)->setChecked(true);
        button(&dialog, "OKBtn")->click();
        const edit::OverlayMembers &m = host.members;
        QVERIFY(m.PLACEOBJECT_FLG);
        QCOMPARE(m.SHAPE, edit::shapes()[row].code);
        QCOMPARE(m.SHAPE_INDEX, qint16(row));
        QCOMPARE(m.SHAPE_INRBAND, qint16(inner));
        QCOMPARE(m.SHAPE_OUTBAND, qint16(outer));
        QCOMPARE(m.DRAWMENU, QStringLiteral("Shape"));
        QVERIFY(m.DRAW_NOW_FLG);
        QVERIFY(host.crossPointer);

        // Opened again, the dialog selects what was chosen.
        AddShape1 again(host, m_ui->services);
        QCOMPARE(again.shapes()->currentRow(), row);
        QVERIFY(again.innerOption(inner)->isChecked());
        QVERIFY(again.outerOption(outer)->isChecked());
    }

    // The preview follows the list and the bands; entries sharing a code
    // preview alike.
    void shapePreview()
    {
        HostDouble host;
        AddShape1 dialog(host, m_ui->services);
        const auto previewOf = [&](const char *name) {
            for (int i = 0; i < dialog.shapes()->count(); ++i)
                if (dialog.shapes()->item(i)->text() == QLatin1String(name))
                    dialog.shapes()->setCurrentRow(i);
            return dialog.preview();
        };
        const QImage square = previewOf("SQUARE");
        const QImage circle = previewOf("CIRCLE");
        QVERIFY(square != circle);
        QCOMPARE(previewOf("CIRCLE_MAX"), previewOf("CIRCLE_270_RB"));
        QCOMPARE(previewOf("REGION"), previewOf("OTHER_MAX"));
        const QImage before = previewOf("SQUARE");
        dialog.outerOption(2)->setChecked(true);
        dialog.innerOption(2)->setChecked(true);
        QVERIFY(dialog.preview() != before);
        // A wide shape previews wider than tall.
        dialog.sizeBox(0)->setText(QStringLiteral("5"));
        dialog.sizeBox(1)->setText(QStringLiteral("20"));
        const QImage wide = previewOf("RECTANGLE");
        const QRgb background = wide.pixel(0, 0);
        QVERIFY(wide.pixel(wide.width() / 2, 20) == background);
        QVERIFY(wide.pixel(20, wide.height() / 2) != background);
    }

private:
    std::unique_ptr<UiFixture> m_ui;
};

QTEST_MAIN(TestOverlayDialogs)
#include "tst_overlaydialogs.moc"
