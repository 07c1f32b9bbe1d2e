#include "MetaWidget.h"

#include "TableWidget.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QSplitter>

namespace {

/// Holds the two buttons for the side of a link at fixed positions: as large as the two together,
/// without frame and title.
class LinkSideBox : public QGroupBox
{
public:
    using QGroupBox::QGroupBox;

    QSize sizeHint() const override
    {
        const QRect buttons = childrenRect();
        return {buttons.x() + buttons.width(), buttons.y() + buttons.height()};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override {}
};

// Widgets are created in the order in which they are read, which is the order of the Tab key.

template<typename Object>
Object *make(QWidget *parent, const char *name)
{
    auto *object = new Object(parent);
    object->setObjectName(QLatin1String(name));
    return object;
}

template<typename Widget>
Widget *add(QBoxLayout *row, const char *name)
{
    auto *widget = make<Widget>(row->parentWidget(), name);
    row->addWidget(widget);
    return widget;
}

template<typename Layout>
Layout *addLayout(QBoxLayout *outer, const char *name)
{
    auto *layout = new Layout;
    layout->setObjectName(QLatin1String(name));
    outer->addLayout(layout);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    return layout;
}

QVBoxLayout *makeColumn(QWidget *widget, const char *name, int margin, int spacing)
{
    auto *column = make<QVBoxLayout>(widget, name);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    return column;
}

// The layout of a group's contents: they keep to the top of its column.
template<typename Layout>
Layout *addContents(QGroupBox *group, int margin, int spacing)
{
    QVBoxLayout *column = makeColumn(group, "", margin, spacing);
    auto *contents = addLayout<Layout>(column, "");
    column->setAlignment(contents, Qt::AlignTop);
    return contents;
}

void addSpacer(QBoxLayout *row, int width, int height, QSizePolicy::Policy horizontal)
{
    row->addSpacerItem(new QSpacerItem(width, height, horizontal, QSizePolicy::Minimum));
}

QFrame *addLine(QBoxLayout *column, const char *name)
{
    auto *line = add<QFrame>(column, name);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

// A label that leads into the field to its right.
QLabel *addLeadIn(QBoxLayout *row, const char *name)
{
    auto *label = add<QLabel>(row, name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

// Wide enough for most names, and no wider for any.
QComboBox *addTargetChooser(QBoxLayout *row, const char *name)
{
    auto *chooser = add<QComboBox>(row, name);
    chooser->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    chooser->setMinimumContentsLength(24);
    return chooser;
}

QGroupBox *addRuleGroup(QBoxLayout *column, const char *name)
{
    auto *group = add<QGroupBox>(column, name);
    group->setEnabled(false);
    group->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return group;
}

QGroupBox *addLinkSideBox(QBoxLayout *row, const char *name)
{
    auto *box = make<LinkSideBox>(row->parentWidget(), name);
    box->setFlat(true);
    row->addWidget(box, 0, Qt::AlignVCenter);
    return box;
}

// The buttons of a row exclude those of the other rows. They need a group that says so: a parent in
// common would draw the buttons of the link's side in as well.
QRadioButton *addRule(QBoxLayout *row, const char *name, QButtonGroup *rules)
{
    auto *button = add<QRadioButton>(row, name);
    rules->addButton(button);
    return button;
}

QRadioButton *makeLinkSide(QGroupBox *box, const char *name, QButtonGroup *sides,
                           const QRect &place)
{
    auto *button = make<QRadioButton>(box, name);
    sides->addButton(button);
    button->setGeometry(place);
    return button;
}

// A field tells a screen reader the words of its row that stand around it.
void nameField(QWidget *field, const QString &before, const QLabel *after = nullptr)
{
    const QString words = after ? before + u' ' + after->text() : before;
    field->setAccessibleName(words.simplified());
}

template<typename... Widgets>
void silence(Widgets *...widgets)
{
    (widgets->blockSignals(true), ...);
}

} // namespace

MetaWidget::MetaWidget(QWidget *parent, const QString &name, Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setObjectName(name.isEmpty() ? QStringLiteral("MetaWidget") : name);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum);
    setMinimumSize(800, 600);
    setMaximumSize(32767, 32767);

    MetaWidgetLayout = make<QGridLayout>(this, "MetaWidgetLayout");
    MetaWidgetLayout->setContentsMargins(11, 11, 11, 11);
    MetaWidgetLayout->setSpacing(6);
    splitter4 = make<QSplitter>(this, "splitter4");
    splitter4->setOrientation(Qt::Horizontal);
    MetaWidgetLayout->addWidget(splitter4, 0, 0);

    buildEffectList();
    splitter2 = make<QSplitter>(splitter4, "splitter2");
    splitter2->setOrientation(Qt::Vertical);
    buildParameters();
    layout20 = make<QWidget>(splitter2, "layout20");
    layout20Column = makeColumn(layout20, "layout20", 11, 6);
    buildStartRule();
    buildEndRule();

    // Room to spare goes to the table and to the parameters.
    splitter4->setStretchFactor(splitter4->indexOf(layout18), 1);
    splitter2->setStretchFactor(splitter2->indexOf(m_effectGroupBox), 1);

    languageChange();
    resize(QSize(819, 662).expandedTo(minimumSizeHint()));
}

// A field that loses the focus as it is destroyed would still report an edit to whoever listens.
MetaWidget::~MetaWidget()
{
    silence(m_effectTable, m_effectComboBox);
    silence(m_startFixedRadioButton, m_startFixedLineEdit, m_startLinkedRadioButton,
            m_startLinkStartRadioButton, m_startLinkEndRadioButton, m_startLinkEffectComboBox,
            m_startLinkOffsetLineEdit);
    silence(m_endFixedRadioButton, m_endFixedLineEdit, m_endLinkedRadioButton,
            m_endLinkStartRadioButton, m_endLinkEndRadioButton, m_endLinkEffectComboBox,
            m_endLinkOffsetLineEdit, m_endCyclesRadioButton, m_endCyclesSpinBox);
}

void MetaWidget::buildEffectList()
{
    layout18 = make<QWidget>(splitter4, "layout18");
    layout18Column = makeColumn(layout18, "layout18", 11, 6);
    m_effectTable = add<meta::TableWidget>(layout18Column, "m_effectTable");
    m_effectTable->setColumnCount(9);

    layout1 = addLayout<QHBoxLayout>(layout18Column, "layout1");
    m_deleteEffectButton = add<QPushButton>(layout1, "m_deleteEffectButton");
    addSpacer(layout1, 20, 16, QSizePolicy::Minimum);
    m_newEffectButton = add<QPushButton>(layout1, "m_newEffectButton");
    m_effectComboBox = add<QComboBox>(layout1, "m_effectComboBox");
    m_effectComboBox->setMinimumSize(150, 0);
}

void MetaWidget::buildParameters()
{
    m_effectGroupBox = make<QGroupBox>(splitter2, "m_effectGroupBox");
    m_effectGroupBox->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    m_effectGroupBox->setMinimumSize(0, 300);
    m_effectGroupBox->setMaximumSize(32767, 32767);
    auto *contents = addContents<QHBoxLayout>(m_effectGroupBox, 11, 6);
    m_effectParameterFrame = add<QFrame>(contents, "m_effectParameterFrame");
    m_effectParameterFrame->setFrameShape(QFrame::NoFrame);
    m_effectParameterFrame->setFrameShadow(QFrame::Raised);
}

void MetaWidget::buildStartRule()
{
    m_startButtonGroup = addRuleGroup(layout20Column, "m_startButtonGroup");
    auto *rows = addContents<QVBoxLayout>(m_startButtonGroup, 5, 0);
    auto *rules = new QButtonGroup(m_startButtonGroup);

    layout11 = addLayout<QHBoxLayout>(rows, "layout11");
    m_startFixedRadioButton = addRule(layout11, "m_startFixedRadioButton", rules);
    m_startFixedRadioButton->setChecked(true);
    addSpacer(layout11, 16, 20, QSizePolicy::Expanding);
    layout8 = addLayout<QHBoxLayout>(layout11, "layout8");
    m_startFixedLineEdit = add<QLineEdit>(layout8, "m_startFixedLineEdit");
    textLabel8 = add<QLabel>(layout8, "textLabel8");

    line1 = addLine(rows, "line1");

    m_startLinkedLayout = addLayout<QVBoxLayout>(rows, "m_startLinkedLayout");
    layout39 = addLayout<QHBoxLayout>(m_startLinkedLayout, "layout39");
    m_startLinkedRadioButton = addRule(layout39, "m_startLinkedRadioButton", rules);
    m_startLinkButtonGroup = addLinkSideBox(layout39, "m_startLinkButtonGroup");
    auto *sides = new QButtonGroup(m_startLinkButtonGroup);
    m_startLinkStartRadioButton =
        makeLinkSide(m_startLinkButtonGroup, "m_startLinkStartRadioButton", sides, {0, 0, 77, 18});
    m_startLinkStartRadioButton->setChecked(true);
    m_startLinkEndRadioButton =
        makeLinkSide(m_startLinkButtonGroup, "m_startLinkEndRadioButton", sides, {76, 1, 76, 18});

    layout14 = addLayout<QHBoxLayout>(m_startLinkedLayout, "layout14");
    textLabel4 = addLeadIn(layout14, "textLabel4");
    m_startLinkEffectComboBox = addTargetChooser(layout14, "m_startLinkEffectComboBox");

    layout15 = addLayout<QHBoxLayout>(m_startLinkedLayout, "layout15");
    textLabel5 = addLeadIn(layout15, "textLabel5");
    layout6 = addLayout<QHBoxLayout>(layout15, "layout6");
    m_startLinkOffsetLineEdit = add<QLineEdit>(layout6, "m_startLinkOffsetLineEdit");
    textLabel7 = add<QLabel>(layout6, "textLabel7");
}

void MetaWidget::buildEndRule()
{
    m_endButtonGroup = addRuleGroup(layout20Column, "m_endButtonGroup");
    auto *rows = addContents<QVBoxLayout>(m_endButtonGroup, 5, 0);
    auto *rules = new QButtonGroup(m_endButtonGroup);

    layout11_2 = addLayout<QHBoxLayout>(rows, "layout11_2");
    m_endFixedRadioButton = addRule(layout11_2, "m_endFixedRadioButton", rules);
    m_endFixedRadioButton->setChecked(true);
    addSpacer(layout11_2, 16, 20, QSizePolicy::Expanding);
    layout8_2 = addLayout<QHBoxLayout>(layout11_2, "layout8_2");
    m_endFixedLineEdit = add<QLineEdit>(layout8_2, "m_endFixedLineEdit");
    textLabel8_2 = add<QLabel>(layout8_2, "textLabel8_2");

    line2 = addLine(rows, "line2");

    layout20_2 = addLayout<QVBoxLayout>(rows, "layout20_2");
    layout17 = addLayout<QHBoxLayout>(layout20_2, "layout17");
    m_endLinkedRadioButton = addRule(layout17, "m_endLinkedRadioButton", rules);
    m_endLinkButtonGroup = addLinkSideBox(layout17, "m_endLinkButtonGroup");
    auto *sides = new QButtonGroup(m_endLinkButtonGroup);
    m_endLinkStartRadioButton =
        makeLinkSide(m_endLinkButtonGroup, "m_endLinkStartRadioButton", sides, {10, 0, 63, 18});
    m_endLinkStartRadioButton->setChecked(true);
    m_endLinkEndRadioButton =
        makeLinkSide(m_endLinkButtonGroup, "m_endLinkEndRadioButton", sides, {80, 0, 63, 18});

    layout18_2 = addLayout<QHBoxLayout>(layout20_2, "layout18_2");
    textLabel4_2 = addLeadIn(layout18_2, "textLabel4_2");
    m_endLinkEffectComboBox = addTargetChooser(layout18_2, "m_endLinkEffectComboBox");

    layout19 = addLayout<QHBoxLayout>(layout20_2, "layout19");
    textLabel5_2 = addLeadIn(layout19, "textLabel5_2");
    layout6_2 = addLayout<QHBoxLayout>(layout19, "layout6_2");
    m_endLinkOffsetLineEdit = add<QLineEdit>(layout6_2, "m_endLinkOffsetLineEdit");
    textLabel7_2 = add<QLabel>(layout6_2, "textLabel7_2");

    line3 = addLine(rows, "line3");

    layout22 = addLayout<QHBoxLayout>(rows, "layout22");
    m_endCyclesRadioButton = addRule(layout22, "m_endCyclesRadioButton", rules);
    addSpacer(layout22, 30, 20, QSizePolicy::Expanding);
    layout21 = addLayout<QHBoxLayout>(layout22, "layout21");
    m_endCyclesSpinBox = add<QSpinBox>(layout21, "m_endCyclesSpinBox");
    m_endCyclesSpinBox->setRange(1, 1000);
    m_endCyclesSpinBox->setKeyboardTracking(false);
    m_endCyclesSpinBox->setCorrectionMode(QAbstractSpinBox::CorrectToNearestValue);
    textLabel10 = add<QLabel>(layout21, "textLabel10");
}

void MetaWidget::languageChange()
{
    setWindowTitle(tr("Form1"));
    m_effectTable->setHorizontalHeaderLabels({tr("Name"), tr("Type"), tr("Group"), tr("Priority"),
                                              tr("Start"), tr("End"), tr("Fade In"), tr("Fade Out"),
                                              tr("EID")});
    m_deleteEffectButton->setText(tr("Delete Selected Effects"));
    m_newEffectButton->setText(tr("New Effect"));
    m_effectGroupBox->setTitle(tr("Effect Parameters"));

    m_startButtonGroup->setTitle(tr("Start Time"));
    m_startFixedRadioButton->setText(tr("Fixed at "));
    textLabel8->setText(tr("sec."));
    m_startLinkedRadioButton->setText(tr("Linked to the"));
    m_startLinkButtonGroup->setTitle(QString());
    m_startLinkStartRadioButton->setText(tr("Start"));
    m_startLinkEndRadioButton->setText(tr("End"));
    textLabel4->setText(tr("of Effect "));
    textLabel5->setText(tr("with an offset of"));
    textLabel7->setText(tr("sec."));

    m_endButtonGroup->setTitle(tr("End Time"));
    m_endFixedRadioButton->setText(tr("Fixed duration of "));
    textLabel8_2->setText(tr("sec."));
    m_endLinkedRadioButton->setText(tr("Linked to the"));
    m_endLinkButtonGroup->setTitle(QString());
    m_endLinkStartRadioButton->setText(tr("Start"));
    m_endLinkEndRadioButton->setText(tr("End"));
    textLabel4_2->setText(tr("of Effect "));
    textLabel5_2->setText(tr("with an offset of"));
    textLabel7_2->setText(tr("sec."));
    m_endCyclesRadioButton->setText(tr("A fixed Duration of "));
    textLabel10->setText(tr("Cycles"));

    nameFields();
}

void MetaWidget::nameFields()
{
    nameField(m_effectComboBox, m_newEffectButton->text());
    nameField(m_startFixedLineEdit, m_startFixedRadioButton->text(), textLabel8);
    nameField(m_startLinkEffectComboBox, textLabel4->text());
    nameField(m_startLinkOffsetLineEdit, textLabel5->text(), textLabel7);
    nameField(m_endFixedLineEdit, m_endFixedRadioButton->text(), textLabel8_2);
    nameField(m_endLinkEffectComboBox, textLabel4_2->text());
    nameField(m_endLinkOffsetLineEdit, textLabel5_2->text(), textLabel7_2);
    nameField(m_endCyclesSpinBox, m_endCyclesRadioButton->text(), textLabel10);
}

void MetaWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        languageChange();
}
