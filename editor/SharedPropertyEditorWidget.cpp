#include "SharedPropertyEditorWidget.h"

#include <QBoxLayout>
#include <QEvent>
#include <QTableWidget>

SharedPropertyEditorWidget::SharedPropertyEditorWidget(QWidget *parent, const QString &name,
                                                       Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setObjectName(name.isEmpty() ? QStringLiteral("SharedPropertyEditorWidget") : name);

    SharedPropertyEditorWidgetLayout = new QHBoxLayout(this);
    SharedPropertyEditorWidgetLayout->setObjectName(
        QStringLiteral("SharedPropertyEditorWidgetLayout"));
    SharedPropertyEditorWidgetLayout->setContentsMargins(11, 11, 11, 11);
    SharedPropertyEditorWidgetLayout->setSpacing(6);

    m_propertyTable = new QTableWidget(0, 2, this);
    m_propertyTable->setObjectName(QStringLiteral("m_propertyTable"));
    SharedPropertyEditorWidgetLayout->addWidget(m_propertyTable);

    languageChange();
    resize(QSize(330, 356).expandedTo(minimumSizeHint()));
}

void SharedPropertyEditorWidget::languageChange()
{
    setWindowTitle(tr("Form1"));
    m_propertyTable->setHorizontalHeaderLabels({tr("Property"), tr("Value")});
}

void SharedPropertyEditorWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        languageChange();
}
