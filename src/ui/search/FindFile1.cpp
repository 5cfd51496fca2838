#include "ui/search/FindFile1.h"

#include "core/app/AppState.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedLayout>
#include <QTabBar>
#include <QVBoxLayout>

namespace tarnby::ui {

using search::SearchTab;

FindFile1::FindFile1(AppState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("FindFile1"));
    setWindowTitle(QStringLiteral("Find Files and File Types"));

    m_tabs = new QTabBar(this);
    m_tabs->setObjectName(QStringLiteral("TabStrip1"));
    m_stack = new QStackedLayout;
    QFont small(QStringLiteral("Small Fonts"));
    small.setPointSize(7);
    for (const search::SearchTabTable &table : search::searchTabs()) {
        m_tabs->addTab(QLatin1String(table.caption));
        auto *frame = new QGroupBox(this);
        frame->setObjectName(QStringLiteral("Frame1"));
        frame->setFont(small);
        auto *grid = new QGridLayout(frame);
        // Long tabs run in two columns, as the window is laid out.
        const int rows = table.choices.size() > 10 ? int((table.choices.size() + 1) / 2) : int(table.choices.size());
        QList<QRadioButton *> &options = m_options[size_t(table.tab)];
        for (int i = 0; i < int(table.choices.size()); ++i) {
            const search::SearchChoice &choice = table.choices[size_t(i)];
            auto *button = new QRadioButton(QLatin1String(choice.caption), frame);
            button->setObjectName(QLatin1String(table.arrayName));
            button->setProperty("index", i);
            button->setToolTip(QLatin1String(choice.tooltip));
            button->installEventFilter(this);
            connect(button, &QRadioButton::clicked, this, [this, tab = table.tab, i] { chooseOption(tab, i); });
            grid->addWidget(button, i % rows, i / rows);
            options.append(button);
        }
        if (table.tab == SearchTab::Miscellaneous) {
            m_label = new QLabel(QStringLiteral("Enter File Name to Search or File Type:"), frame);
            m_label->setObjectName(QStringLiteral("Label1"));
            m_text = new QLineEdit(frame);
            m_text->setObjectName(QStringLiteral("Text1"));
            m_text->setToolTip(QStringLiteral("Enter the Name of the file to search for or a global search name - (*.BMP)"));
            connect(m_text, &QLineEdit::returnPressed, this, &FindFile1::okClicked);
            grid->addWidget(m_label, rows, 0);
            grid->addWidget(m_text, rows + 1, 0);
        }
        // The options keep together at the top of a frame taller than they need.
        grid->setRowStretch(grid->rowCount(), 1);
        m_frames[size_t(table.tab)] = frame;
        m_stack->addWidget(frame);
    }
    connect(m_tabs, &QTabBar::currentChanged, this, &FindFile1::showTab);

    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setObjectName(QStringLiteral("OKBtn"));
    m_ok->setToolTip(QStringLiteral("Find Selected File or File Types"));
    m_cancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("CancelBtn"));
    m_cancel->setToolTip(QStringLiteral("Cancel Tarnby Search"));
    auto *help = new QPushButton(QStringLiteral("Help"), this);
    help->setObjectName(QStringLiteral("HelpBtn"));
    help->setToolTip(QStringLiteral("Help with Tarnby Search Window"));
    // Enter is handled by the window itself (on an option button or in
    // Text1), not by a default button.
    for (QPushButton *button : {m_ok, m_cancel, help}) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    connect(m_ok, &QPushButton::clicked, this, &FindFile1::okClicked);
    connect(m_cancel, &QPushButton::clicked, this, &FindFile1::reject);
    connect(help, &QPushButton::clicked, this, &FindFile1::helpRequested);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    buttons->addWidget(help);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addLayout(m_stack);
    layout->addLayout(buttons);

    showTab(0);
    installWindowColors(this, m_state);
}

QRadioButton *FindFile1::option(SearchTab tab, int index) const
{
    const QList<QRadioButton *> &options = m_options[size_t(tab)];
    return index >= 0 && index < options.size() ? options.at(index) : nullptr;
}

void FindFile1::showTab(int tab)
{
    // The stack shows the tab's frame and hides the others. Showing and
    // hiding them here as well left the newly shown frame without its place
    // in the window (drawn nowhere) once the window was on screen.
    m_stack->setCurrentIndex(tab);
}

void FindFile1::chooseOption(SearchTab tab, int index)
{
    if (QRadioButton *button = option(tab, index))
        button->setChecked(true);
    m_chosenIndex = index;
}

void FindFile1::okClicked()
{
    const std::optional<SearchTab> tab = search::searchTabByCaption(m_tabs->tabText(m_tabs->currentIndex()));
    if (tab) {
        const QRadioButton *button = option(*tab, m_chosenIndex);
        const std::optional<search::PatternChoice> choice
            = search::choosePattern(*tab, m_chosenIndex, button && button->isChecked(), m_text->text());
        if (choice) {
            m_state.searchPattern = choice->pattern;
            if (choice->filterIndex >= 0)
                emit filterChosen(choice->filterIndex);
            m_frames[size_t(*tab)]->setTitle(choice->frameCaption);
        }
    }
    m_ok->setEnabled(false);
    m_cancel->setEnabled(false);
    accept();
}

bool FindFile1::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        auto *button = qobject_cast<QRadioButton *>(watched);
        if (button && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) {
            for (int t = 0; t < search::SearchTabCount; ++t) {
                if (m_options[size_t(t)].contains(button))
                    chooseOption(SearchTab(t), button->property("index").toInt());
            }
            okClicked();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace tarnby::ui
