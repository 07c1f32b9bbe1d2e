#include "InspectCommand.h"

#include "Effect.h"
#include "EffectPhrases.h"
#include "EffectText.h"
#include "ShowSource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <array>

namespace rehearsal {

namespace {

// The host does not know what a plug-in's effect holds; the text that the effect saves does.
// Nothing if an effect saves what is not an effect.
std::optional<std::vector<EffectText>> effectTexts(const Show &show)
{
    std::vector<EffectText> texts;
    for (Effect *effect : show.effects()) {
        QString saved;
        QTextStream stream(&saved);
        effect->save(stream);
        stream.flush();
        std::optional<EffectText> text = parseEffect(saved);
        if (!text)
            return {};
        texts.push_back(std::move(*text));
    }
    return texts;
}

QString typeOf(const EffectText &effect)
{
    return propertyOf(effect, u"type").value_or(effect.identity.type);
}

// --- JSON ---

QJsonArray toJson(const std::vector<EffectText> &effects)
{
    QJsonArray array;
    for (const EffectText &effect : effects) {
        QJsonObject object{{QStringLiteral("type"), typeOf(effect)}};
        for (const EffectText::Property &property : effect.properties)
            object[property.key] = property.text;
        object[QStringLiteral("children")] = toJson(effect.nested);
        array.append(object);
    }
    return array;
}

// --- A line an effect ---

class EffectTable
{
public:
    explicit EffectTable(const StageMap &map) : m_map(map) {}

    void add(const std::vector<EffectText> &effects, int depth = 0);
    void write(QTextStream &out) const;

private:
    enum Column { Eid, Name, Type, Group, Start, End, Begin, Until, ColumnCount };
    using Line = std::array<QString, ColumnCount>;

    QString groupOf(const EffectText &effect) const;

    const StageMap &m_map;
    std::vector<Line> m_lines;
};

QString EffectTable::groupOf(const EffectText &effect) const
{
    const quint32 gid = propertyOf(effect, u"gid").value_or(QString()).toUInt();
    if (gid == 0)
        return QStringLiteral("no group");
    const StageGroup *group = m_map.group(gid);
    return group ? QStringLiteral("%1 (%2)").arg(group->name()).arg(gid)
                 : QStringLiteral("missing group (%1)").arg(gid);
}

void EffectTable::add(const std::vector<EffectText> &effects, int depth)
{
    for (const EffectText &effect : effects) {
        // Nothing places an effect that is not nested: its rules mean nothing.
        const bool isPlaced = depth > 0;
        m_lines.push_back(
            {QString(2 * depth, u' ') + propertyOf(effect, u"eid").value_or(QStringLiteral("-")),
             propertyOf(effect, u"name").value_or(QStringLiteral("(no name)")), typeOf(effect),
             groupOf(effect), isPlaced ? startPhrase(effect) : QStringLiteral("-"),
             isPlaced ? endPhrase(effect) : QStringLiteral("-"),
             secondsColumn(propertyOf(effect, u"begin")),
             secondsColumn(propertyOf(effect, u"end"))});
        for (QString &field : m_lines.back())
            field = singleLine(field);
        add(effect.nested, depth + 1);
    }
}

void EffectTable::write(QTextStream &out) const
{
    constexpr qsizetype widestColumn = 40; // one long name does not push all lines apart
    std::array<qsizetype, ColumnCount> widths{};
    for (const Line &line : m_lines) {
        for (std::size_t column = 0; column < line.size(); ++column)
            widths[column] = std::max(widths[column], std::min(widestColumn, line[column].size()));
    }
    for (const Line &line : m_lines) {
        for (std::size_t column = Eid; column <= End; ++column)
            out << line[column].leftJustified(widths[column]) << "  ";
        out << line[Begin].rightJustified(widths[Begin]) << " to "
            << line[Until].rightJustified(widths[Until]) << '\n';
    }
}

} // namespace

ExitStatus inspect(const InspectRequest &request, const Show::TypeSetup &types, Console &console)
{
    const std::unique_ptr<Show> show = openShow(request.showFile, types, console);
    if (!show)
        return Fault;
    const auto effects = effectTexts(*show);
    if (!effects) {
        return console.fail(
            FileFault{request.showFile, 0, QStringLiteral("an effect saves no sound text")}
                .message());
    }
    if (request.asJson) {
        console.out() << QString::fromUtf8(QJsonDocument(toJson(*effects)).toJson());
        return Done;
    }
    EffectTable table(show->map());
    table.add(*effects);
    table.write(console.out());
    return Done;
}

} // namespace rehearsal
