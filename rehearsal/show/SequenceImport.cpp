#include "SequenceImport.h"

#include "Effect.h"
#include "XmlInput.h"

#include <QFileInfo>
#include <QHash>
#include <QXmlStreamReader>

#include <cmath>
#include <limits>

namespace rehearsal {

namespace {

/// An entry of the list of settings: "key=value,key=value".
struct Settings
{
    QHash<QString, QString> values;
    qint64 line = 0;
};

struct SequenceEffect
{
    QString type;
    quint32 start = 0; ///< ms
    quint32 end = 0;   ///< ms
    qsizetype model = 0;
    quint32 numberInModel = 0;
    std::optional<quint32> settings; ///< index in the list of settings
    /// Index of the previous effect of its layer, if that ends where this one starts.
    std::optional<std::size_t> adjacent;
    qint64 line = 0;
};

/// Tells somebody of an import: of reading the sequence, then of building the show.
class ProgressTeller
{
public:
    /// @param textLength of the sequence, characters
    ProgressTeller(const ImportProgress &progress, XmlInput &input, qint64 textLength)
        : m_progress(progress), m_input(input), m_textLength(textLength)
    {
    }

    void tellRead() { tell(m_input.reader().characterOffset() * readShare / m_textLength); }
    void tellBuilt(qint64 effects, qint64 total)
    {
        tell(readShare + effects * (100 - readShare) / total);
    }

private:
    static constexpr qint64 readShare = 10; // percent; building takes far longer

    void tell(qint64 percent)
    {
        // A fault that says nothing, which ends the import as any other.
        if (m_progress && !m_input.fault() && !m_progress(static_cast<int>(percent)))
            m_input.fail(0, QString());
    }

    const ImportProgress &m_progress;
    XmlInput &m_input;
    qint64 m_textLength;
};

/// A sequence as it is written, sound in itself, before anything is made of it.
class SequenceText
{
public:
    SequenceText(XmlInput &input, ProgressTeller &progress) : m_input(input), m_progress(progress)
    {
    }

    void read();

    QStringList models; ///< with at least one effect, in document order
    std::vector<Settings> settings;
    std::vector<SequenceEffect> effects;

private:
    void readSettings();
    void readElements();
    void readModel();
    void readEffect(const QString &model, std::optional<std::size_t> previous);
    std::optional<quint32> readTime(const QString &name);
    void checkReferences();

    XmlInput &m_input;
    ProgressTeller &m_progress;
    QHash<QString, qsizetype> m_modelIndex;
    std::vector<quint32> m_effectCounts; ///< by model
    qint64 m_settingValues = 0;
};

void SequenceText::read()
{
    if (!m_input.enter(QStringLiteral("xsequence"), QStringLiteral("a sequence")))
        return;
    QXmlStreamReader &reader = m_input.reader();
    const qint64 line = reader.lineNumber();
    while (reader.readNextStartElement()) {
        if (reader.name() == u"EffectDB")
            readSettings();
        else if (reader.name() == u"ElementEffects")
            readElements();
        else
            reader.skipCurrentElement();
    }
    checkReferences();
    if (effects.empty())
        m_input.fail(line, QStringLiteral("the sequence has no effect on a model"));
}

void SequenceText::readSettings()
{
    QXmlStreamReader &reader = m_input.reader();
    while (reader.readNextStartElement()) {
        if (reader.name() != u"Effect") {
            reader.skipCurrentElement();
            continue;
        }
        if (std::ssize(settings) == maximumEffects) {
            m_input.fail(QStringLiteral("there are more than %1 settings").arg(maximumEffects));
            return;
        }
        m_progress.tellRead();
        Settings &entry = settings.emplace_back();
        entry.line = reader.lineNumber();
        const QString text = reader.readElementText(QXmlStreamReader::SkipChildElements);
        for (const QStringView pair : QStringView(text).split(u',')) {
            const qsizetype equals = pair.indexOf(u'=');
            if (equals <= 0)
                continue;
            if (++m_settingValues > maximumProperties) {
                m_input.fail(
                    entry.line,
                    QStringLiteral("the settings have more than %1 values").arg(maximumProperties));
                return;
            }
            entry.values.insert(pair.first(equals).trimmed().toString(),
                                pair.sliced(equals + 1).trimmed().toString());
        }
    }
}

void SequenceText::readElements()
{
    QXmlStreamReader &reader = m_input.reader();
    while (reader.readNextStartElement()) {
        if (reader.name() == u"Element" && m_input.attribute(QStringLiteral("type")) == u"model")
            readModel();
        else
            reader.skipCurrentElement();
    }
}

// Effects stand in the model's layers and, without following one another, in its strands.
void SequenceText::readModel()
{
    QXmlStreamReader &reader = m_input.reader();
    const QString model = m_input.attribute(QStringLiteral("name"));
    if (model.isEmpty())
        m_input.fail(QStringLiteral("a model has no name"));
    int layerDepth = 0;
    std::optional<std::size_t> lastOfLayer;
    for (int depth = 1; depth > 0 && !reader.atEnd();) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement) {
            if (depth == layerDepth)
                layerDepth = 0;
            --depth;
        } else if (token == QXmlStreamReader::StartElement && reader.name() == u"Effect") {
            const bool isInLayer = depth == layerDepth;
            readEffect(model, isInLayer ? lastOfLayer : std::nullopt);
            if (isInLayer)
                lastOfLayer = effects.size() - 1;
            reader.skipCurrentElement();
        } else if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (reader.name() == u"EffectLayer") {
                layerDepth = depth;
                lastOfLayer.reset();
            }
        }
    }
}

void SequenceText::readEffect(const QString &model, std::optional<std::size_t> previous)
{
    m_progress.tellRead();
    const std::optional<quint32> start = readTime(QStringLiteral("startTime"));
    const std::optional<quint32> end = readTime(QStringLiteral("endTime"));
    if (!start || !end)
        return;
    if (*end < *start) {
        m_input.fail(
            QStringLiteral("an effect ends at %1 before it starts at %2").arg(*end).arg(*start));
        return;
    }
    SequenceEffect effect;
    const QString settingsText = m_input.attribute(QStringLiteral("ref"));
    effect.settings = wholeNumber(settingsText);
    if (!settingsText.isEmpty() && !effect.settings) {
        m_input.fail(
            QStringLiteral("an effect has the ref \"%1\", not a whole number").arg(settingsText));
        return;
    }
    // One more is the meta effect that holds them.
    if (std::ssize(effects) + 1 == maximumEffects) {
        m_input.fail(QStringLiteral("there are more than %1 effects").arg(maximumEffects - 1));
        return;
    }
    if (!m_modelIndex.contains(model)) {
        if (models.size() == maximumLights) {
            m_input.fail(QStringLiteral("there are more than %1 models").arg(maximumLights));
            return;
        }
        m_modelIndex.insert(model, models.size());
        models.append(model);
        m_effectCounts.push_back(0);
    }
    effect.type = m_input.attribute(QStringLiteral("name"));
    effect.start = *start;
    effect.end = *end;
    effect.model = m_modelIndex.value(model);
    effect.numberInModel = ++m_effectCounts[static_cast<std::size_t>(effect.model)];
    if (previous && effects[*previous].end == effect.start)
        effect.adjacent = previous;
    effect.line = m_input.reader().lineNumber();
    effects.push_back(effect);
}

std::optional<quint32> SequenceText::readTime(const QString &name)
{
    const QString text = m_input.attribute(name);
    const std::optional<quint32> time = wholeNumber(text);
    if (text.isEmpty())
        m_input.fail(QStringLiteral("an effect has no %1").arg(name));
    else if (!time)
        m_input.fail(QStringLiteral("an effect has the %1 \"%2\", not a number of milliseconds"
                                    " from 0 to 4294967295")
                         .arg(name, text));
    return time;
}

// The settings may stand behind the effects that use them.
void SequenceText::checkReferences()
{
    for (const SequenceEffect &effect : effects) {
        if (!effect.settings || *effect.settings < settings.size())
            continue;
        m_input.fail(effect.line,
                     QStringLiteral("an effect has the ref %1, but there are %2 settings")
                         .arg(*effect.settings)
                         .arg(settings.size()));
        return;
    }
}

/// Makes the meta effect of a sequence, child by child.
class SequenceBuilder
{
public:
    SequenceBuilder(const SequenceText &text, XmlInput &input, ProgressTeller &progress, Show &show,
                    ImportOptions options)
        : m_text(text), m_input(input), m_progress(progress), m_show(show), m_options(options)
    {
    }

    /// Null after a fault.
    std::unique_ptr<Effect> build(const QString &name);
    void buildMap();

    ImportSummary summary;

private:
    std::unique_ptr<Effect> make(const QString &type);
    /// Eids are counted from 1 in document order.
    std::unique_ptr<Effect> makeChild(quint32 eid, const SequenceEffect &from);
    std::unique_ptr<Effect> makeTyped(const SequenceEffect &from);
    void placeChild(Effect &child, quint32 eid, const SequenceEffect &from);
    QString levelText(const SequenceEffect &effect, const QString &key);
    QString fadeText(const SequenceEffect &effect, const QString &key);
    /// The number that the effect's settings give to a key; `missing` where they give none.
    double number(const SequenceEffect &effect, const QString &key, double missing);

    const SequenceText &m_text;
    XmlInput &m_input;
    ProgressTeller &m_progress;
    Show &m_show;
    ImportOptions m_options;
};

// On a grid, every light in the middle of its cell.
void SequenceBuilder::buildMap()
{
    const auto count = static_cast<int>(m_text.models.size());
    const auto columns = static_cast<int>(std::ceil(std::sqrt(count)));
    const int rows = (count + columns - 1) / columns;
    for (int i = 0; i < count; ++i) {
        const int column = i % columns;
        const int row = i / columns;
        const QPointF place((column + 0.5) / columns, (row + 0.5) / rows);
        const auto uid = static_cast<quint32>(i + 1);
        StageLight *light = m_show.map().addLight(uid, m_text.models[i], place);
        m_show.map().addGroup(uid, m_text.models[i], ChasingGroup, {light});
    }
    summary.lights = count;
}

std::unique_ptr<Effect> SequenceBuilder::build(const QString &name)
{
    std::unique_ptr<Effect> meta = make(QStringLiteral("Meta Effect"));
    if (!meta)
        return nullptr;
    meta->setProperty(QStringLiteral("name"), name);
    meta->setProperty(QStringLiteral("loop"), QStringLiteral("0"));
    quint32 eid = 0;
    for (const SequenceEffect &effect : m_text.effects) {
        std::unique_ptr<Effect> child = makeChild(++eid, effect);
        if (!child)
            return nullptr;
        m_show.buildLog().built.push_back(child.get());
        meta->addChild(child.release());
        m_progress.tellBuilt(eid, static_cast<qint64>(m_text.effects.size()));
        if (m_input.fault())
            return nullptr;
    }
    summary.effects = static_cast<int>(m_text.effects.size());
    // What the type "Meta Effect" offers for this are slots, which any plug-in may have.
    for (const char *slot : {"updateEffectTimes", "updateEndTime"}) {
        if (!QMetaObject::invokeMethod(meta.get(), slot, Qt::DirectConnection)) {
            m_input.fail(0, QStringLiteral("the type \"Meta Effect\" has no slot %1()")
                                .arg(QLatin1String(slot)));
            return nullptr;
        }
    }
    meta->init();
    m_show.buildLog().built.push_back(meta.get());
    return meta;
}

std::unique_ptr<Effect> SequenceBuilder::make(const QString &type)
{
    std::unique_ptr<Effect> effect(m_show.factory().make(type));
    if (!effect)
        m_input.fail(0, QStringLiteral("there is no effect of the type \"%1\"").arg(type));
    return effect;
}

std::unique_ptr<Effect> SequenceBuilder::makeChild(quint32 eid, const SequenceEffect &from)
{
    std::unique_ptr<Effect> child = makeTyped(from);
    if (!child)
        return nullptr;
    placeChild(*child, eid, from);
    const QString fadeIn = fadeText(from, QStringLiteral("T_TEXTCTRL_Fadein"));
    const QString fadeOut = fadeText(from, QStringLiteral("T_TEXTCTRL_Fadeout"));
    if (m_input.fault())
        return nullptr;
    child->setProperty(QStringLiteral("fadein"), fadeIn);
    child->setProperty(QStringLiteral("fadeout"), fadeOut);
    child->init();
    return child;
}

std::unique_ptr<Effect> SequenceBuilder::makeTyped(const SequenceEffect &from)
{
    if (from.type == u"Twinkle" || from.type == u"Strobe")
        return make(from.type);
    const bool isRamp = from.type == u"On";
    std::unique_ptr<Effect> effect =
        make(isRamp ? QStringLiteral("Ramp") : QStringLiteral("Solid"));
    if (!effect)
        return nullptr;
    if (isRamp) {
        effect->setProperty(QStringLiteral("from"),
                            levelText(from, QStringLiteral("E_TEXTCTRL_Eff_On_Start")));
        effect->setProperty(QStringLiteral("to"),
                            levelText(from, QStringLiteral("E_TEXTCTRL_Eff_On_End")));
    } else if (from.type == u"Off") {
        effect->setProperty(QStringLiteral("level"), QStringLiteral("0"));
    } else {
        effect->setProperty(QStringLiteral("level"), QStringLiteral("1"));
        ++summary.replaced[from.type];
    }
    return effect;
}

void SequenceBuilder::placeChild(Effect &child, quint32 eid, const SequenceEffect &from)
{
    child.setProperty(QStringLiteral("eid"), QString::number(eid));
    child.setProperty(QStringLiteral("name"),
                      QStringLiteral("%1 %2").arg(m_text.models[from.model],
                                                  QString::number(from.numberInModel)));
    child.setProperty(QStringLiteral("gid"), QString::number(from.model + 1));
    if (m_options.linkAdjacent && from.adjacent) {
        child.setProperty(QStringLiteral("starttype"), QStringLiteral("1"));
        child.setProperty(QStringLiteral("startlinkeid"), QString::number(*from.adjacent + 1));
        child.setProperty(QStringLiteral("startlinkstart"), QStringLiteral("0"));
        child.setProperty(QStringLiteral("startlinkoffset"), QStringLiteral("0"));
        ++summary.linked;
    } else {
        child.setProperty(QStringLiteral("starttype"), QStringLiteral("0"));
        child.setProperty(QStringLiteral("startfixedtime"), QString::number(from.start));
    }
    child.setProperty(QStringLiteral("endtype"), QStringLiteral("0"));
    child.setProperty(QStringLiteral("endfixedtime"), QString::number(from.end - from.start));
}

QString SequenceBuilder::levelText(const SequenceEffect &effect, const QString &key)
{
    return QString::number(qBound(0.0, number(effect, key, 100.0), 100.0) / 100.0);
}

QString SequenceBuilder::fadeText(const SequenceEffect &effect, const QString &key)
{
    constexpr double longest = std::numeric_limits<quint32>::max();
    const double ms = std::round(number(effect, key, 0.0) * 1000.0);
    if (!(ms >= 0.0 && ms <= longest)) {
        const Settings &settings = m_text.settings[*effect.settings];
        m_input.fail(settings.line,
                     QStringLiteral("the setting %1 is \"%2\", not 0 to 4294967.295 seconds")
                         .arg(key, settings.values.value(key)));
        return {};
    }
    return QString::number(static_cast<quint32>(ms));
}

double SequenceBuilder::number(const SequenceEffect &effect, const QString &key, double missing)
{
    if (!effect.settings)
        return missing;
    const Settings &settings = m_text.settings[*effect.settings];
    const QString text = settings.values.value(key);
    if (text.isEmpty())
        return missing;
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        m_input.fail(settings.line,
                     QStringLiteral("the setting %1 is \"%2\", not a number").arg(key, text));
        return missing;
    }
    return value;
}

} // namespace

std::unique_ptr<Show> importSequence(const QString &file, const Show::TypeSetup &addTypes,
                                     ImportOptions options, ImportSummary *summary,
                                     FileFault *fault, const ImportProgress &progress)
{
    const std::optional<QByteArray> bytes = readWholeFile(file, fault);
    return bytes ? parseSequence(*bytes, file, addTypes, options, summary, fault, progress)
                 : nullptr;
}

std::unique_ptr<Show> parseSequence(const QByteArray &text, const QString &name,
                                    const Show::TypeSetup &addTypes, ImportOptions options,
                                    ImportSummary *summary, FileFault *fault,
                                    const ImportProgress &progress)
{
    const std::optional<QString> source = readXmlText(text, name, fault);
    if (!source)
        return nullptr;
    XmlInput input(*source, name);
    ProgressTeller teller(progress, input, source->size());
    SequenceText sequence(input, teller);
    sequence.read();
    auto show = std::make_unique<Show>(addTypes);
    SequenceBuilder builder(sequence, input, teller, *show, options);
    if (!input.fault()) {
        builder.buildMap();
        if (std::unique_ptr<Effect> meta = builder.build(QFileInfo(name).completeBaseName()))
            show->addEffect(meta.release());
    }
    if (const std::optional<FileFault> found = input.fault()) {
        *fault = *found;
        return nullptr;
    }
    *summary = builder.summary;
    return show;
}

} // namespace rehearsal
