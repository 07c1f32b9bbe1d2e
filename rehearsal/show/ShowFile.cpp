#include "ShowFile.h"

#include "Effect.h"
#include "EffectHost.h"
#include "EffectText.h"
#include "XmlInput.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QTextStream>
#include <QXmlStreamReader>

#include <array>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace rehearsal {

namespace {

struct LightText
{
    quint32 uid = 0;
    QString name;
    QPointF place;
};

struct GroupText
{
    quint32 uid = 0;
    QString name;
    GroupTypeEnum type = ChasingGroup;
    QList<quint32> lights;
    qint64 line = 0;
};

constexpr std::array<std::pair<GroupTypeEnum, const char *>, 3> groupTypeNames{
    {{ChasingGroup, "chasing"}, {SynchronizedGroup, "synchronized"}, {LeafGroup, "leaf"}}};

/// A show as it is written, sound in itself, before anything of it is built.
class ShowText
{
public:
    explicit ShowText(XmlInput &input) : m_input(input) {}

    void read();

    QList<LightText> lights;
    QList<GroupText> groups;
    std::vector<EffectText> effects;

private:
    void readVersion();
    void readMap();
    void readLight();
    void readGroup();
    std::optional<quint32> readUid(const QString &what);
    std::optional<double> readCoordinate(quint32 light, const QString &axis);
    std::optional<GroupTypeEnum> readGroupType(quint32 group);
    void readGroupLights(GroupText &group);
    void checkGroupLights();

    XmlInput &m_input;
    QSet<quint32> m_lightUids;
    QSet<quint32> m_groupUids;
    EffectBudget m_budget;
    qint64 m_groupLights = 0;
};

void ShowText::read()
{
    if (!m_input.enter(QStringLiteral("show"), QStringLiteral("a show")))
        return;
    QXmlStreamReader &reader = m_input.reader();
    const qint64 line = reader.lineNumber();
    readVersion();
    bool hasMap = false;
    while (reader.readNextStartElement()) {
        if (reader.name() == u"map") {
            if (hasMap)
                m_input.fail(QStringLiteral("the show has a second map"));
            hasMap = true;
            readMap();
        } else if (reader.name() == u"effect") {
            effects.push_back(readEffect(reader, m_budget));
        } else {
            reader.skipCurrentElement();
        }
    }
    if (!hasMap)
        m_input.fail(line, QStringLiteral("the show has no map"));
    checkGroupLights();
    if (effects.empty())
        m_input.fail(line, QStringLiteral("the show has no effect"));
}

void ShowText::readVersion()
{
    const QString version = m_input.attribute(QStringLiteral("version"));
    if (version.isEmpty())
        m_input.fail(QStringLiteral("the show has no version"));
    else if (version != u"1")
        m_input.fail(
            QStringLiteral("the show has the version \"%1\", only \"1\" is known").arg(version));
}

void ShowText::readMap()
{
    QXmlStreamReader &reader = m_input.reader();
    while (reader.readNextStartElement()) {
        if (reader.name() == u"light")
            readLight();
        else if (reader.name() == u"group")
            readGroup();
        reader.skipCurrentElement();
    }
}

void ShowText::readLight()
{
    const std::optional<quint32> uid = readUid(QStringLiteral("light"));
    if (!uid)
        return;
    const std::optional<double> x = readCoordinate(*uid, QStringLiteral("x"));
    const std::optional<double> y = readCoordinate(*uid, QStringLiteral("y"));
    if (!x || !y)
        return;
    if (m_lightUids.contains(*uid)) {
        m_input.fail(QStringLiteral("light %1 is there twice").arg(*uid));
        return;
    }
    if (lights.size() == maximumLights) {
        m_input.fail(QStringLiteral("there are more than %1 lights").arg(maximumLights));
        return;
    }
    m_lightUids.insert(*uid);
    lights.append({*uid, m_input.attribute(QStringLiteral("name")), {*x, *y}});
}

void ShowText::readGroup()
{
    const std::optional<quint32> uid = readUid(QStringLiteral("group"));
    if (!uid)
        return;
    const std::optional<GroupTypeEnum> type = readGroupType(*uid);
    if (!type)
        return;
    if (m_groupUids.contains(*uid)) {
        m_input.fail(QStringLiteral("group %1 is there twice").arg(*uid));
        return;
    }
    if (groups.size() == maximumGroups) {
        m_input.fail(QStringLiteral("there are more than %1 groups").arg(maximumGroups));
        return;
    }
    GroupText group{
        *uid, m_input.attribute(QStringLiteral("name")), *type, {}, m_input.reader().lineNumber()};
    readGroupLights(group);
    m_groupUids.insert(*uid);
    groups.append(group);
}

std::optional<quint32> ShowText::readUid(const QString &what)
{
    const QString text = m_input.attribute(QStringLiteral("uid"));
    if (text.isEmpty()) {
        m_input.fail(QStringLiteral("a %1 has no uid").arg(what));
        return {};
    }
    const std::optional<quint32> uid = wholeNumber(text);
    if (!uid || *uid == 0) {
        m_input.fail(QStringLiteral("a %1 has the uid \"%2\", not a number from 1 to 4294967295")
                         .arg(what, text));
        return {};
    }
    return uid;
}

std::optional<double> ShowText::readCoordinate(quint32 light, const QString &axis)
{
    const QString text = m_input.attribute(axis);
    if (text.isEmpty()) {
        m_input.fail(QStringLiteral("light %1 has no %2").arg(QString::number(light), axis));
        return {};
    }
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !(value >= 0.0 && value <= 1.0)) {
        m_input.fail(QStringLiteral("light %1 has the %2 \"%3\", not a number from 0 to 1")
                         .arg(QString::number(light), axis, text));
        return {};
    }
    return value;
}

std::optional<GroupTypeEnum> ShowText::readGroupType(quint32 group)
{
    const QString text = m_input.attribute(QStringLiteral("type"));
    for (const auto &[type, name] : groupTypeNames) {
        if (text == QLatin1String(name))
            return type;
    }
    m_input.fail(QStringLiteral("group %1 has the type \"%2\", not chasing, synchronized or leaf")
                     .arg(QString::number(group), text));
    return {};
}

void ShowText::readGroupLights(GroupText &group)
{
    const QString uids = m_input.attribute(QStringLiteral("lights")).simplified();
    if (uids.isEmpty()) {
        m_input.fail(QStringLiteral("group %1 has no lights").arg(group.uid));
        return;
    }
    m_groupLights += uids.count(u' ') + 1;
    if (m_groupLights > maximumGroupLights) {
        m_input.fail(QStringLiteral("the groups have more than %1 lights").arg(maximumGroupLights));
        return;
    }
    for (const QStringView text : QStringView(uids).split(u' ')) {
        const std::optional<quint32> uid = wholeNumber(text);
        if (!uid) {
            m_input.fail(QStringLiteral("group %1 names the light \"%2\", which is not a uid")
                             .arg(QString::number(group.uid), text));
            return;
        }
        group.lights.append(*uid);
    }
    if (group.type == LeafGroup && group.lights.size() != 1)
        m_input.fail(QStringLiteral("leaf group %1 has %2 lights, not one")
                         .arg(group.uid)
                         .arg(group.lights.size()));
}

// A group may stand before its lights.
void ShowText::checkGroupLights()
{
    for (const GroupText &group : std::as_const(groups)) {
        for (const quint32 light : group.lights) {
            if (m_lightUids.contains(light))
                continue;
            m_input.fail(group.line, QStringLiteral("group %1 names light %2, which is missing")
                                         .arg(group.uid)
                                         .arg(light));
            return;
        }
    }
}

void buildMap(const ShowText &text, StageMap &map)
{
    for (const LightText &light : text.lights)
        map.addLight(light.uid, light.name, light.place);
    for (const GroupText &group : text.groups) {
        QList<StageLight *> lights;
        for (const quint32 uid : group.lights)
            lights.append(map.light(uid));
        map.addGroup(group.uid, group.name, group.type, lights);
    }
}

QString coordinateText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

void writeMap(QTextStream &stream, const StageMap &map)
{
    stream << "  <map>\n";
    for (const StageLight *light : map.lights()) {
        stream << "    <light uid=\"" << light->uid() << "\" name=\""
               << escapedAttribute(light->name()) << "\" x=\"" << coordinateText(light->place().x())
               << "\" y=\"" << coordinateText(light->place().y()) << "\"/>\n";
    }
    for (const StageGroup *group : map.groups()) {
        const char *typeName = "";
        for (const auto &[type, name] : groupTypeNames) {
            if (type == group->groupType())
                typeName = name;
        }
        QStringList uids;
        for (const StageLight *light : group->lights())
            uids.append(QString::number(light->uid()));
        stream << "    <group uid=\"" << group->uid() << "\" name=\""
               << escapedAttribute(group->name()) << "\" type=\"" << typeName << "\" lights=\""
               << uids.join(u' ') << "\"/>\n";
    }
    stream << "  </map>\n";
}

// The text is on the disk before it takes the file's place. That it took it is so only now: after a
// power failure the new show is there, too. Not every file system can do it; none loses the old
// one.
void syncFolder(const QString &folder)
{
#ifdef Q_OS_UNIX
    const int descriptor =
        open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
#else
    Q_UNUSED(folder)
#endif
}

} // namespace

std::unique_ptr<Show> readShow(const QString &file, const Show::TypeSetup &addTypes,
                               FileFault *fault)
{
    const std::optional<QByteArray> bytes = readWholeFile(file, fault);
    return bytes ? parseShow(*bytes, file, addTypes, fault) : nullptr;
}

std::unique_ptr<Show> parseShow(const QByteArray &text, const QString &name,
                                const Show::TypeSetup &addTypes, FileFault *fault)
{
    const std::optional<QString> source = readXmlText(text, name, fault);
    if (!source)
        return nullptr;
    XmlInput input(*source, name);
    ShowText showText(input);
    showText.read();
    if (const std::optional<FileFault> found = input.fault()) {
        *fault = *found;
        return nullptr;
    }
    auto show = std::make_unique<Show>(addTypes);
    buildMap(showText, show->map());
    for (const EffectText &effect : showText.effects)
        show->addEffect(show->factory().build(effect, *source, &show->buildLog()));
    return show;
}

bool saveShow(const Show &show, const QString &file, FileFault *fault)
{
    return saveText(showText(show).toUtf8(), file, fault);
}

bool saveText(const QByteArray &text, const QString &file, FileFault *fault)
{
    const auto fail = [&](const QString &what) {
        *fault = {file, 0, QStringLiteral("the show cannot be saved: %1").arg(what)};
        return false;
    };
    // The atomic replace would put a regular file in the place of a device or a pipe.
    const QFileInfo present(file);
    if (present.exists() && !present.isFile())
        return fail(QStringLiteral("this is not a regular file"));
    QSaveFile output(file);
    if (!output.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return fail(output.errorString());
    // A disk that fills up shows first in a short count, which is no error to the device.
    for (qsizetype done = 0; done < text.size();) {
        const qint64 count = output.write(text.constData() + done, text.size() - done);
        if (count <= 0)
            return fail(output.errorString());
        done += count;
    }
    if (!output.commit())
        return fail(output.errorString());
    syncFolder(QFileInfo(file).canonicalPath()); // of a link, where it leads to
    return true;
}

QString showText(const Show &show)
{
    QString text;
    QTextStream stream(&text);
    stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<show version=\"1\">\n";
    writeMap(stream, show.map());
    for (Effect *effect : show.effects())
        effect->save(stream);
    stream << "</show>\n";
    stream.flush();
    return text;
}

QByteArray definitionText(const Show &show)
{
    const EffectHost::SavingDefinitions definitions;
    return showText(show).toUtf8();
}

} // namespace rehearsal
