#include "EditorStage.h"

#include <QVBoxLayout>

WidgetStub::WidgetStub(MapModel *map, const QString &type, quint32 eid) : StubEffect(map, eid)
{
    setProperty(QStringLiteral("type"), type);
    m_dirty = false;
    changes.clear();
}

WidgetStub::~WidgetStub()
{
    delete m_widget;
}

QWidget *WidgetStub::internalGetEffectWidget()
{
    ++widgetRequests;
    if (!m_widget) {
        m_widget = new QWidget;
        m_widget->setObjectName(QStringLiteral("parameters of ") + text("eid"));
        auto *layout = new QVBoxLayout(m_widget);
        layout->addWidget(new QLabel(QStringLiteral("Level")));
        layout->addWidget(new QLineEdit);
    }
    return m_widget;
}

EditorStage::EditorStage()
{
    for (const char *name : {"Chase", "Selection", "Stub", "Text", "White Fade"}) {
        const QString type = QString::fromLatin1(name);
        factory.addType(type, [type](MapModel *made) { return new WidgetStub(made, type); });
    }
    rehearsal::StageLight *light = map.addLight(1, QStringLiteral("Lamp"), {0.5, 0.5});
    map.addGroup(10, QStringLiteral("Roof"), ChasingGroup, {light});
    map.addGroup(11, QStringLiteral("Windows"), ChasingGroup, {light});
    map.addGroup(12, QStringLiteral("Door"), SynchronizedGroup, {light});
    map.addGroup(13, QStringLiteral("Lamp"), LeafGroup, {light});
}

WidgetStub *EditorStage::add(quint32 eid)
{
    auto *child = new WidgetStub(&map, QStringLiteral("Stub"), eid);
    child->with("name", QStringLiteral("Child %1").arg(eid));
    effect.addChild(child);
    return child;
}

MetaWidget &EditorStage::open()
{
    effect.internalGetEffectWidget();
    form().show();
    if (!QTest::qWaitForWindowActive(&form()))
        qFatal("the editor's window did not become active");
    return form();
}

MetaWidget &EditorStage::form() const
{
    auto *form = qobject_cast<MetaWidget *>(effect.editorWidget());
    if (!form)
        qFatal("the editor is not open");
    return *form;
}

QStringList EditorStage::row(int row) const
{
    QStringList texts;
    for (int column = 0; column < table().columnCount(); ++column)
        texts.append(table().text(row, column));
    return texts;
}

QStringList EditorStage::items(const QComboBox *chooser)
{
    QStringList texts;
    for (int i = 0; i < chooser->count(); ++i)
        texts.append(chooser->itemText(i));
    return texts;
}
