#include "Measure.h"
#include "Stub.h"

#include "ChildKeys.h"
#include "CreateEffect.h"
#include "EffectFactory.h"
#include "EffectLib.h"
#include "MetaEffect.h"
#include "StageMap.h"

#include <QTextStream>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

namespace keys = meta::keys;

QString saved(Effect &effect)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    effect.save(stream);
    return text;
}

// A host with the meta effect and one type of children.
class Host
{
public:
    Host() : factory(map)
    {
        factory.addType(QStringLiteral("Meta Effect"),
                        [](MapModel *model) { return createEffect(model, 0); });
        factory.addType(QStringLiteral("Stub"), [](MapModel *model) -> Effect * {
            Effect *child = bench::makeStub(model, true).release();
            keys::type.writeText(*child, QStringLiteral("Stub"));
            return child;
        });
    }

    rehearsal::StageMap map;
    rehearsal::EffectFactory factory;
};

// A meta effect whose children have all of their keys.
std::unique_ptr<MetaEffect> fullMetaEffect(Host &host, int count)
{
    auto effect = std::make_unique<MetaEffect>(&host.map, 0);
    for (int i = 0; i < count; ++i) {
        Effect *child = host.factory.make(QStringLiteral("Stub"));
        const QString number = QString::number(1000 + i);
        keys::eid.write(*child, static_cast<quint32>(i));
        keys::name.writeText(*child, QStringLiteral("Effect ") + number);
        for (const meta::TextKey *key :
             {static_cast<const meta::TextKey *>(&keys::gid),
              static_cast<const meta::TextKey *>(&keys::begin),
              static_cast<const meta::TextKey *>(&keys::end),
              static_cast<const meta::TextKey *>(&keys::fadeIn),
              static_cast<const meta::TextKey *>(&keys::fadeOut),
              static_cast<const meta::TextKey *>(&keys::startRule.fixedTime),
              static_cast<const meta::TextKey *>(&keys::startRule.linkEid),
              static_cast<const meta::TextKey *>(&keys::startRule.linkOffset),
              static_cast<const meta::TextKey *>(&keys::endRule.fixedTime),
              static_cast<const meta::TextKey *>(&keys::endRule.linkEid),
              static_cast<const meta::TextKey *>(&keys::endRule.linkOffset)})
            key->writeText(*child, number);
        keys::transparency.writeText(*child, QStringLiteral("0.25"));
        keys::priority.writeText(*child, QStringLiteral("3"));
        keys::startRule.type.write(*child, meta::rule::linked);
        keys::startRule.linkStart.writeText(*child, QStringLiteral("1"));
        keys::endRule.type.write(*child, meta::rule::cycles);
        keys::endRule.linkStart.writeText(*child, QStringLiteral("0"));
        keys::endCycleCount.write(*child, 2);
        effect->addChild(child);
    }
    effect->init();
    return effect;
}

// The references: the toolkit's own XML classes over the same document.
void copyByXmlReader(benchmark::State &state)
{
    Host host;
    const QString text = saved(*fullMetaEffect(host, static_cast<int>(state.range(0))));
    bench::measureReference(state, "XML reader", [&] {
        QXmlStreamReader reader(text);
        qsizetype length = 0;
        while (!reader.atEnd()) {
            reader.readNext();
            length += reader.text().toString().size();
        }
        benchmark::DoNotOptimize(length);
    });
}

void copyByXmlWriter(benchmark::State &state)
{
    Host host;
    const QString text = saved(*fullMetaEffect(host, static_cast<int>(state.range(0))));
    // The document's tokens are read once, outside the loop.
    struct Token
    {
        QXmlStreamReader::TokenType type;
        QString name;
        QXmlStreamAttributes attributes;
        QString text;
    };
    std::vector<Token> tokens;
    QXmlStreamReader reader(text);
    while (!reader.atEnd()) {
        reader.readNext();
        tokens.push_back({reader.tokenType(), reader.name().toString(), reader.attributes(),
                          reader.text().toString()});
    }
    bench::measureReference(state, "XML writer", [&] {
        QString copy;
        QXmlStreamWriter writer(&copy);
        for (const Token &token : tokens) {
            if (token.type == QXmlStreamReader::StartElement) {
                writer.writeStartElement(token.name);
                writer.writeAttributes(token.attributes);
            } else if (token.type == QXmlStreamReader::EndElement) {
                writer.writeEndElement();
            } else if (token.type == QXmlStreamReader::Characters) {
                writer.writeCharacters(token.text);
            }
        }
        benchmark::DoNotOptimize(copy.size());
    });
}

void save(benchmark::State &state)
{
    Host host;
    const auto effect = fullMetaEffect(host, static_cast<int>(state.range(0)));
    bench::measure(state, "XML writer", [&] { benchmark::DoNotOptimize(saved(*effect).size()); });
}

void load(benchmark::State &state)
{
    Host host;
    const QString text = saved(*fullMetaEffect(host, static_cast<int>(state.range(0))));
    bench::measure(state, "XML reader", [&] {
        const std::unique_ptr<Effect> effect(host.factory.createEffect(text));
        benchmark::DoNotOptimize(effect.get());
    });
}

} // namespace

BENCHMARK(copyByXmlWriter)->Name("XML writer copies")->Apply(bench::sizes);
BENCHMARK(save)->Name("save")->Apply(bench::sizes);
BENCHMARK(copyByXmlReader)->Name("XML reader copies")->Apply(bench::sizes);
BENCHMARK(load)->Name("load")->Apply(bench::sizes);
