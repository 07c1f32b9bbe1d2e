#pragma once

#include <QWidget>

class QHBoxLayout;
class QTableWidget;

/// A table of names and values, to be placed wherever a list of properties is wanted.
///
/// Every member is named as its object. The form owns them; they are never null.
class SharedPropertyEditorWidget : public QWidget
{
    Q_OBJECT

public:
    /// @param name the object name; "SharedPropertyEditorWidget" where it is empty
    explicit SharedPropertyEditorWidget(QWidget *parent = nullptr, const QString &name = {},
                                        Qt::WindowFlags flags = {});

    QHBoxLayout *SharedPropertyEditorWidgetLayout = nullptr;
    QTableWidget *m_propertyTable = nullptr;

public slots:
    /// Sets every text anew, as the translators of the moment have it.
    void languageChange();

protected:
    void changeEvent(QEvent *event) override;
};
