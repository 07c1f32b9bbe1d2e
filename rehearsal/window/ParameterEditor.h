#pragma once

#include "EffectHost.h"
#include "StageEffect.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>

class QFormLayout;

namespace rehearsal {

/// A form with one field for each declared property of an effect: a check box for a flag, a spin
/// box for a number. It follows every change of the effect and writes what the user enters.
///
/// A number beyond what its field offers is shown as the nearest that it does, and stays as it is
/// until the user edits it.
class ParameterEditor final : public QWidget
{
    Q_OBJECT

public:
    /// Observes the effect, which has one observer at a time. Not owned; may go before the editor.
    explicit ParameterEditor(Effect &effect, QWidget *parent = nullptr);
    ~ParameterEditor() override;

    /// Gives the host's own effects parameter editors.
    static void registerAsEditor();

private:
    void addField(QFormLayout &form, const PropertyStore::Property &property);
    void addFlag(QFormLayout &form, const PropertyStore::Property &property);
    void addNumber(QFormLayout &form, const PropertyStore::Property &property);
    void write(const QString &key, const QString &text);

    QPointer<Effect> m_effect;
    /// Show a property's text in its field.
    std::map<QString, std::function<void()>> m_refreshers;
};

} // namespace rehearsal
