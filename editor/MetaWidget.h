#pragma once

#include <QMenu>
#include <QWidget>

class QComboBox;
class QFrame;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QSplitter;
class QVBoxLayout;

namespace meta {
class TableWidget;
}

/// The editor panel of a meta effect: a passive form, which connects nothing itself.
///
/// Every member is named as its object. The form owns them all; they are never null.
class MetaWidget : public QWidget
{
    Q_OBJECT

public:
    /// @param name the object name; "MetaWidget" where it is empty
    explicit MetaWidget(QWidget *parent = nullptr, const QString &name = {},
                        Qt::WindowFlags flags = {});
    ~MetaWidget() override;

    QGridLayout *MetaWidgetLayout = nullptr;
    QSplitter *splitter4 = nullptr;

    // The list of effects. A pane and its layout share a name: the layout's member is ...Column.
    QWidget *layout18 = nullptr;
    QVBoxLayout *layout18Column = nullptr;
    meta::TableWidget *m_effectTable = nullptr;
    QHBoxLayout *layout1 = nullptr;
    QPushButton *m_deleteEffectButton = nullptr;
    QPushButton *m_newEffectButton = nullptr;
    QComboBox *m_effectComboBox = nullptr;

    QSplitter *splitter2 = nullptr;
    QGroupBox *m_effectGroupBox = nullptr;
    QFrame *m_effectParameterFrame = nullptr; ///< takes the selected effect's own editing widget
    QWidget *layout20 = nullptr;
    QVBoxLayout *layout20Column = nullptr;

    // The start rule: (o) Fixed at [...] sec.
    QGroupBox *m_startButtonGroup = nullptr;
    QHBoxLayout *layout11 = nullptr;
    QRadioButton *m_startFixedRadioButton = nullptr;
    QHBoxLayout *layout8 = nullptr;
    QLineEdit *m_startFixedLineEdit = nullptr;
    QLabel *textLabel8 = nullptr;
    QFrame *line1 = nullptr;
    // (o) Linked to the (o) Start (o) End of Effect [...] with an offset of [...] sec.
    QVBoxLayout *m_startLinkedLayout = nullptr;
    QHBoxLayout *layout39 = nullptr;
    QRadioButton *m_startLinkedRadioButton = nullptr;
    QGroupBox *m_startLinkButtonGroup = nullptr;
    QRadioButton *m_startLinkStartRadioButton = nullptr;
    QRadioButton *m_startLinkEndRadioButton = nullptr;
    QHBoxLayout *layout14 = nullptr;
    QLabel *textLabel4 = nullptr;
    QComboBox *m_startLinkEffectComboBox = nullptr;
    QHBoxLayout *layout15 = nullptr;
    QLabel *textLabel5 = nullptr;
    QHBoxLayout *layout6 = nullptr;
    QLineEdit *m_startLinkOffsetLineEdit = nullptr;
    QLabel *textLabel7 = nullptr;

    // The end rule: (o) Fixed duration of [...] sec.
    QGroupBox *m_endButtonGroup = nullptr;
    QHBoxLayout *layout11_2 = nullptr;
    QRadioButton *m_endFixedRadioButton = nullptr;
    QHBoxLayout *layout8_2 = nullptr;
    QLineEdit *m_endFixedLineEdit = nullptr;
    QLabel *textLabel8_2 = nullptr;
    QFrame *line2 = nullptr;
    // (o) Linked to the (o) Start (o) End of Effect [...] with an offset of [...] sec.
    QVBoxLayout *layout20_2 = nullptr;
    QHBoxLayout *layout17 = nullptr;
    QRadioButton *m_endLinkedRadioButton = nullptr;
    QGroupBox *m_endLinkButtonGroup = nullptr;
    QRadioButton *m_endLinkStartRadioButton = nullptr;
    QRadioButton *m_endLinkEndRadioButton = nullptr;
    QHBoxLayout *layout18_2 = nullptr;
    QLabel *textLabel4_2 = nullptr;
    QComboBox *m_endLinkEffectComboBox = nullptr;
    QHBoxLayout *layout19 = nullptr;
    QLabel *textLabel5_2 = nullptr;
    QHBoxLayout *layout6_2 = nullptr;
    QLineEdit *m_endLinkOffsetLineEdit = nullptr;
    QLabel *textLabel7_2 = nullptr;
    QFrame *line3 = nullptr;
    // (o) A fixed Duration of [...] Cycles
    QHBoxLayout *layout22 = nullptr;
    QRadioButton *m_endCyclesRadioButton = nullptr;
    QHBoxLayout *layout21 = nullptr;
    QSpinBox *m_endCyclesSpinBox = nullptr; ///< reports a typed number once it is entered
    QLabel *textLabel10 = nullptr;

    QMenu m_popupMenu; ///< has no parent; filled and shown from outside

public slots:
    /// Sets every text anew, as the translators of the moment have it.
    void languageChange();

signals:
    // The form's surface for its users; the form itself emits none of them.
    void newEffect(const QString &type);
    void valueChanged(int row, int column, const QString &text);
    void propertyChanged(const QString &key, const QString &value);

protected:
    void changeEvent(QEvent *event) override;

private:
    void buildEffectList();
    void buildParameters();
    void buildStartRule();
    void buildEndRule();
    void nameFields();
};
