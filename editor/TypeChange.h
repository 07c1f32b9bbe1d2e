#pragma once

#include "EditorContext.h"

#include <QPointer>
#include <QString>

class MetaWidget;

namespace meta {

/// Whether the user wants to be asked before a type is changed. Two functions, so that a test can
/// put its own in the place of those that use the user's settings.
struct AskSetting
{
    bool (*isOn)();      ///< true unless stored otherwise
    void (*switchOff)(); ///< for good
};
AskSetting &askSetting();

/// Puts a child of another type in a child's place. Eid, name, group, fades, priority, transparency
/// and both rules go over to it, so every link to and from it holds; the type's own parameters do
/// not.
class TypeChange
{
public:
    /// @param form parent of the question; null while the editor is not open
    TypeChange(MetaWidget *form, const EditorContext &context);
    ~TypeChange();
    Q_DISABLE_COPY_MOVE(TypeChange)

    /// Asks first, unless that is switched off; the host may delete the form, the child or the meta
    /// effect meanwhile. If the factory does not know the type, the child is lost: its row stays,
    /// and the meta effect stays stopped.
    void change(Effect &child, const QString &newType);

private:
    void showFormerType(const Effect &child) const;
    void replace(Effect &child, const QString &newType) const;

    QPointer<MetaWidget> m_form;
    const EditorContext m_context;
};

} // namespace meta
