#include "WidgetDump.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QBoxLayout>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMetaEnum>
#include <QPushButton>
#include <QSet>
#include <QSpinBox>
#include <QSplitter>
#include <QTableWidget>
#include <QTreeWidget>

#include <utility>

namespace {

QString quoted(const QString &text)
{
    return u'"' + text + u'"';
}

QString text(const QSize &size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

template<typename Enum>
QString text(Enum value)
{
    return QString::fromLatin1(QMetaEnum::fromType<Enum>().valueToKey(int(value)));
}

QString text(Qt::Alignment alignment)
{
    static constexpr std::pair<Qt::AlignmentFlag, const char *> names[] = {
        {Qt::AlignLeft, "left"}, {Qt::AlignRight, "right"},   {Qt::AlignHCenter, "center"},
        {Qt::AlignTop, "top"},   {Qt::AlignBottom, "bottom"}, {Qt::AlignVCenter, "middle"}};
    QStringList words;
    for (const auto &[flag, name] : names) {
        if (alignment & flag)
            words.append(QString::fromLatin1(name));
    }
    return words.join(u'-');
}

QString text(const QSizePolicy &policy)
{
    QString both = text(policy.horizontalPolicy()) + u'/' + text(policy.verticalPolicy());
    if (policy.horizontalStretch() || policy.verticalStretch())
        both += QStringLiteral(" stretch %1/%2")
                    .arg(policy.horizontalStretch())
                    .arg(policy.verticalStretch());
    return both;
}

/// The words of one line.
class Line
{
public:
    explicit Line(const QString &what) : m_words(what) {}

    Line &add(const QString &word)
    {
        m_words.append(word);
        return *this;
    }
    Line &add(const char *label, const QString &value)
    {
        return add(QString::fromLatin1(label)).add(value);
    }
    Line &addIf(bool holds, const char *word)
    {
        return holds ? add(QString::fromLatin1(word)) : *this;
    }

    QString text() const { return m_words.join(u' '); }

private:
    QStringList m_words;
};

class Dump
{
public:
    void addWidget(const QWidget &widget, int depth, const QString &place);
    QString lines() const { return m_lines; }

private:
    void addLine(int depth, const Line &line);
    void addLayout(const QLayout &layout, int depth, const QString &place);
    void addChildren(const QWidget &widget, int depth);

    QString m_lines;
    QSet<const QWidget *> m_placed; ///< by a layout
};

void Dump::addLine(int depth, const Line &line)
{
    m_lines += QString(2 * depth, u' ') + line.text() + u'\n';
}

void describe(const QAbstractItemView &view, Line &line)
{
    line.add(text(view.selectionBehavior())).add(text(view.selectionMode()));
    QStringList titles;
    if (const auto *table = qobject_cast<const QTableWidget *>(&view)) {
        for (int column = 0; column < table->columnCount(); ++column)
            titles.append(quoted(table->model()->headerData(column, Qt::Horizontal).toString()));
        line.add("rows", QString::number(table->rowCount()));
        line.addIf(table->isSortingEnabled(), "sorting");
    } else if (const auto *tree = qobject_cast<const QTreeWidget *>(&view)) {
        for (int column = 0; column < tree->columnCount(); ++column)
            titles.append(quoted(tree->headerItem()->text(column)));
        line.add("rows", QString::number(tree->topLevelItemCount()));
        line.addIf(tree->isSortingEnabled(), "sorting");
    }
    line.add("columns", titles.join(QStringLiteral(", ")));
}

void describeText(const QWidget &widget, Line &line)
{
    if (widget.isWindow())
        line.add("caption", quoted(widget.windowTitle()));
    if (const auto *box = qobject_cast<const QGroupBox *>(&widget))
        line.add("title", quoted(box->title())).addIf(box->isFlat(), "flat");
    else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        line.add("text", quoted(button->text()));
    else if (const auto *label = qobject_cast<const QLabel *>(&widget))
        line.add("text", quoted(label->text()));
    else if (const auto *edit = qobject_cast<const QLineEdit *>(&widget))
        line.add("text", quoted(edit->text()));
}

void describeState(const QWidget &widget, Line &line)
{
    if (const auto *button = qobject_cast<const QAbstractButton *>(&widget)) {
        line.addIf(button->isChecked(), "checked");
        if (!button->shortcut().isEmpty())
            line.add("shortcut", button->shortcut().toString(QKeySequence::PortableText));
    }
    if (const auto *button = qobject_cast<const QPushButton *>(&widget))
        line.addIf(button->isDefault(), "default").addIf(button->autoDefault(), "auto-default");
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        line.add("align", text(label->alignment()));
    if (const auto *edit = qobject_cast<const QLineEdit *>(&widget))
        line.addIf(edit->isReadOnly(), "read-only");
    if (const auto *chooser = qobject_cast<const QComboBox *>(&widget))
        line.add("entries", QString::number(chooser->count()))
            .addIf(chooser->isEditable(), "editable");
    if (const auto *box = qobject_cast<const QSpinBox *>(&widget))
        line.add("range", QStringLiteral("%1..%2").arg(box->minimum()).arg(box->maximum()))
            .add("value", QString::number(box->value()));
    if (const auto *splitter = qobject_cast<const QSplitter *>(&widget))
        line.add(text(splitter->orientation()));
    if (widget.metaObject() == &QFrame::staticMetaObject) {
        const auto &frame = static_cast<const QFrame &>(widget);
        line.add(text(frame.frameShape())).add(text(frame.frameShadow()));
    }
    if (const auto *view = qobject_cast<const QAbstractItemView *>(&widget))
        describe(*view, line);
    line.addIf(widget.testAttribute(Qt::WA_ForceDisabled), "disabled");
}

void Dump::addWidget(const QWidget &widget, int depth, const QString &place)
{
    Line line(QString::fromLatin1(widget.metaObject()->className()));
    line.add(quoted(widget.objectName()));
    describeText(widget, line);
    describeState(widget, line);
    if (!widget.minimumSize().isNull())
        line.add("min", text(widget.minimumSize()));
    if (widget.maximumSize() != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX))
        line.add("max", text(widget.maximumSize()));
    line.add("policy", text(widget.sizePolicy()));
    if (!place.isEmpty())
        line.add(place);
    addLine(depth, line);
    addChildren(widget, depth + 1);
}

void Dump::addLayout(const QLayout &layout, int depth, const QString &place)
{
    Line line(QString::fromLatin1(layout.metaObject()->className()));
    line.add(quoted(layout.objectName()));
    const QMargins margins = layout.contentsMargins();
    line.add("margins", QStringLiteral("%1,%2,%3,%4")
                            .arg(margins.left())
                            .arg(margins.top())
                            .arg(margins.right())
                            .arg(margins.bottom()));
    line.add("spacing", QString::number(layout.spacing()));
    if (!place.isEmpty())
        line.add(place);
    addLine(depth, line);

    const auto *grid = qobject_cast<const QGridLayout *>(&layout);
    const auto *box = qobject_cast<const QBoxLayout *>(&layout);
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem *item = layout.itemAt(i);
        QStringList where;
        if (grid) {
            int row = 0, column = 0, rows = 0, columns = 0;
            grid->getItemPosition(i, &row, &column, &rows, &columns);
            where.append(QStringLiteral("cell %1,%2").arg(row).arg(column));
            if (rows != 1 || columns != 1)
                where.append(QStringLiteral("span %1,%2").arg(rows).arg(columns));
        }
        if (box && box->stretch(i) != 0)
            where.append(QStringLiteral("stretch %1").arg(box->stretch(i)));
        if (item->alignment())
            where.append(QStringLiteral("align ") + text(item->alignment()));
        const QString itemPlace = where.join(u' ');

        if (const QWidget *widget = item->widget()) {
            m_placed.insert(widget);
            addWidget(*widget, depth + 1, itemPlace);
        } else if (const QLayout *inner = item->layout()) {
            addLayout(*inner, depth + 1, itemPlace);
        } else if (QSpacerItem *spacer = item->spacerItem()) {
            // Before its first layout a spacer's hint is its size.
            Line spacerLine(QStringLiteral("spacer"));
            spacerLine.add(text(spacer->sizeHint())).add("policy", text(spacer->sizePolicy()));
            addLine(depth + 1, itemPlace.isEmpty() ? spacerLine : spacerLine.add(itemPlace));
        }
    }
}

void Dump::addChildren(const QWidget &widget, int depth)
{
    if (qobject_cast<const QAbstractItemView *>(&widget) || qobject_cast<const QComboBox *>(&widget)
        || qobject_cast<const QAbstractSpinBox *>(&widget))
        return;
    if (const QLayout *layout = widget.layout())
        addLayout(*layout, depth, QString());
    if (const auto *splitter = qobject_cast<const QSplitter *>(&widget)) {
        for (int i = 0; i < splitter->count(); ++i)
            addWidget(*splitter->widget(i), depth, QString());
        return;
    }
    for (const QObject *object : widget.children()) {
        const auto *child = qobject_cast<const QWidget *>(object);
        if (!child || m_placed.contains(child)
            || child->objectName().startsWith(QStringLiteral("qt_")))
            continue;
        const QRect place = child->geometry();
        addWidget(*child, depth,
                  child->isWindow() ? QString()
                                    : QStringLiteral("at %1,%2 ").arg(place.x()).arg(place.y())
                                          + text(place.size()));
    }
}

} // namespace

QString widgetDump(const QWidget &root)
{
    Dump dump;
    dump.addWidget(root, 0, QString());
    return dump.lines();
}
