#include "FormConnections.h"

#include "MetaWidget.h"
#include "TableWidget.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

namespace meta {

// The slots are the meta effect's public interface, which this floor does not include: they are
// connected by name.
void connectForm(const MetaWidget &form, QObject &effect)
{
    const struct
    {
        const QObject *sender;
        const char *signal;
        const char *slot;
    } connections[] = {
        // clang-format off
        {form.m_newEffectButton, SIGNAL(clicked()), SLOT(handleNewEffectClicked())},
        {form.m_deleteEffectButton, SIGNAL(clicked()), SLOT(handleDeleteSelectedEffectsClicked())},
        {form.m_effectTable, SIGNAL(valueChanged(int,int)), SLOT(handleValueChanged(int,int))},
        {form.m_effectTable, SIGNAL(currentChanged(int,int)), SLOT(handleCurrentChanged(int,int))},
        {form.m_effectTable, SIGNAL(selectionChanged()), SLOT(handleSelectionChanged())},
        {form.m_effectTable, SIGNAL(contextMenuRequested(int,int,QPoint)),
         SLOT(handleContextMenuRequested(int,int,QPoint))},
        {form.m_effectTable, SIGNAL(clicked(int,int,int,QPoint)),
         SLOT(handleClicked(int,int,int,QPoint))},
        {form.m_effectTable->horizontalHeader(), SIGNAL(sectionClicked(int)),
         SLOT(handleHeaderClicked(int))},
        {form.m_startFixedRadioButton, SIGNAL(toggled(bool)), SLOT(startFixedToggled(bool))},
        {form.m_startLinkedRadioButton, SIGNAL(toggled(bool)), SLOT(startLinkedToggled(bool))},
        {form.m_startFixedLineEdit, SIGNAL(textChanged(QString)),
         SLOT(startFixedTimeChanged(QString))},
        {form.m_startLinkStartRadioButton, SIGNAL(toggled(bool)),
         SLOT(startLinkStartToggled(bool))},
        {form.m_startLinkEndRadioButton, SIGNAL(toggled(bool)), SLOT(startLinkEndToggled(bool))},
        {form.m_startLinkEffectComboBox, SIGNAL(activated(int)),
         SLOT(startLinkEffectActivated(int))},
        {form.m_startLinkOffsetLineEdit, SIGNAL(textChanged(QString)),
         SLOT(startLinkOffsetChanged(QString))},
        {form.m_endFixedRadioButton, SIGNAL(toggled(bool)), SLOT(endFixedToggled(bool))},
        {form.m_endLinkedRadioButton, SIGNAL(toggled(bool)), SLOT(endLinkedToggled(bool))},
        {form.m_endCyclesRadioButton, SIGNAL(toggled(bool)), SLOT(endCyclesToggled(bool))},
        {form.m_endFixedLineEdit, SIGNAL(textChanged(QString)),
         SLOT(endFixedTimeChanged(QString))},
        {form.m_endLinkStartRadioButton, SIGNAL(toggled(bool)), SLOT(endLinkStartToggled(bool))},
        {form.m_endLinkEndRadioButton, SIGNAL(toggled(bool)), SLOT(endLinkEndToggled(bool))},
        {form.m_endLinkEffectComboBox, SIGNAL(activated(int)), SLOT(endLinkEffectActivated(int))},
        {form.m_endLinkOffsetLineEdit, SIGNAL(textChanged(QString)),
         SLOT(endLinkOffsetChanged(QString))},
        {form.m_endCyclesSpinBox, SIGNAL(valueChanged(int)), SLOT(endCyclesChanged(int))},
        // clang-format on
    };
    for (const auto &connection : connections) {
        [[maybe_unused]] const bool isConnected =
            QObject::connect(connection.sender, connection.signal, &effect, connection.slot);
        Q_ASSERT(isConnected);
    }
}

} // namespace meta
