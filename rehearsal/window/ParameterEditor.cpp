#include "ParameterEditor.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QSignalBlocker>

#include <cmath>
#include <limits>

namespace rehearsal {

namespace {

constexpr auto cycleTimeKey = u"cycletime";
constexpr double realStep = 0.05;
constexpr int realDecimals = 3;

QString labelOf(const QString &key)
{
    if (key == cycleTimeKey)
        return ParameterEditor::tr("Cycle time");
    return key.left(1).toUpper() + key.mid(1);
}

// A spin box of whole numbers that reaches to the end of 32 bits without a sign.
void setUpWholeNumbers(QDoubleSpinBox &box, const QString &key)
{
    box.setDecimals(0);
    box.setRange(0, std::numeric_limits<quint32>::max());
    if (key != cycleTimeKey)
        return;
    box.setSuffix(ParameterEditor::tr(" ms"));
    box.setSingleStep(100);
}

void setUpPartsOfOne(QDoubleSpinBox &box)
{
    box.setDecimals(realDecimals);
    box.setRange(0, 1);
    box.setSingleStep(realStep);
}

} // namespace

ParameterEditor::ParameterEditor(Effect &effect, QWidget *parent)
    : QWidget(parent), m_effect(&effect)
{
    auto *form = new QFormLayout(this);
    for (const PropertyStore::Property &property : EffectHost::properties(effect)) {
        if (property.declared)
            addField(*form, property);
    }
    EffectHost::setObserver(effect, [this](const QString &key, const QString &) {
        const auto refresher = m_refreshers.find(key);
        if (refresher != m_refreshers.end())
            refresher->second();
    });
}

ParameterEditor::~ParameterEditor()
{
    if (m_effect)
        EffectHost::setObserver(*m_effect, {});
}

void ParameterEditor::registerAsEditor()
{
    StageEffect::setEditorMaker([](Effect &effect) {
        auto *editor = new ParameterEditor(effect);
        return StageEffect::Editor{editor, editor};
    });
}

void ParameterEditor::addField(QFormLayout &form, const PropertyStore::Property &property)
{
    switch (property.kind) {
    case PropertyStore::Kind::Flag: addFlag(form, property); break;
    case PropertyStore::Kind::Real:
    case PropertyStore::Kind::Unsigned: addNumber(form, property); break;
    case PropertyStore::Kind::Text:
    case PropertyStore::Kind::Signed: break; // no effect declares one
    }
}

void ParameterEditor::addFlag(QFormLayout &form, const PropertyStore::Property &property)
{
    auto *box = new QCheckBox(labelOf(property.key), this);
    box->setObjectName(QStringLiteral("m_%1CheckBox").arg(property.key));
    form.addRow(box);
    const auto refresh = [this, box, key = property.key] {
        const QSignalBlocker blocker(box);
        box->setChecked(m_effect->getPropertyBool(key));
    };
    refresh();
    m_refreshers[property.key] = refresh;
    connect(box, &QCheckBox::toggled, this, [this, key = property.key](bool on) {
        write(key, on ? QStringLiteral("1") : QStringLiteral("0"));
    });
}

void ParameterEditor::addNumber(QFormLayout &form, const PropertyStore::Property &property)
{
    const bool isWhole = property.kind == PropertyStore::Kind::Unsigned;
    auto *box = new QDoubleSpinBox(this);
    box->setObjectName(QStringLiteral("m_%1SpinBox").arg(property.key));
    if (isWhole)
        setUpWholeNumbers(*box, property.key);
    else
        setUpPartsOfOne(*box);
    form.addRow(labelOf(property.key), box);
    const auto refresh = [this, box, isWhole, key = property.key] {
        const double value = isWhole ? static_cast<double>(m_effect->getPropertyULong(key))
                                     : m_effect->getPropertyDouble(key);
        // The box would write its text anew under the hands of a user who is typing it.
        if (value == box->value())
            return;
        const QSignalBlocker blocker(box);
        box->setValue(std::isnan(value) ? 0.0 : value);
    };
    refresh();
    m_refreshers[property.key] = refresh;
    connect(box, &QDoubleSpinBox::valueChanged, this,
            [this, isWhole, key = property.key](double value) {
                write(key, isWhole ? QString::number(static_cast<quint32>(value))
                                   : QString::number(value, 'g', 6));
            });
}

void ParameterEditor::write(const QString &key, const QString &text)
{
    if (m_effect)
        m_effect->setProperty(key, text);
}

} // namespace rehearsal
