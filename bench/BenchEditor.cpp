#include "Measure.h"
#include "Stub.h"

#include "ChildKeys.h"
#include "EffectFactory.h"
#include "MetaEffect.h"
#include "MetaWidget.h"
#include "StageMap.h"
#include "TableWidget.h"

#include <QApplication>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

namespace keys = meta::keys;

constexpr int columns = 9;

// 1,000 and 10,000 children.
void editorSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->RangeMultiplier(10)->Range(1000, 10000)->Unit(benchmark::kMillisecond);
}

QString cellText(int row, int column)
{
    return QString::number(row * columns + column);
}

// The reference of building: a plain table of the same size, every cell with a text.
void plainTable(benchmark::State &state)
{
    const int rows = static_cast<int>(state.range(0));
    bench::measureReference(state, "plain table", [&] {
        QTableWidget table(rows, columns);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                table.setItem(row, column, new QTableWidgetItem(cellText(row, column)));
    });
}

// A chain: each child starts at the end of the one before it. With the editor open, if wanted.
class EditedChain
{
public:
    explicit EditedChain(int count) : effect(&map, 0)
    {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        for (int i = 0; i < count; ++i) {
            Effect *child = bench::makeStub(&map, i % 2).release();
            keys::eid.write(*child, static_cast<quint32>(i));
            keys::name.writeText(*child, QStringLiteral("Effect %1").arg(i));
            keys::type.writeText(*child, QStringLiteral("Solid"));
            keys::startRule.type.write(*child, i > 0 ? meta::rule::linked : meta::rule::fixed);
            keys::startRule.linkEid.write(*child, static_cast<quint32>(i - 1));
            keys::endRule.fixedTime.write(*child, meta::Millis(quint32{10}));
            effect.addChild(child);
        }
        effect.init();
        effect.updateEffectTimes();
    }

    MetaWidget &open()
    {
        auto *form = qobject_cast<MetaWidget *>(effect.internalGetEffectWidget());
        form->show();
        if (!QTest::qWaitForWindowExposed(form))
            qFatal("the editor is not shown");
        return *form;
    }

    rehearsal::StageMap map;
    rehearsal::EffectFactory factory{map};
    MetaEffect effect;
};

void buildEditor(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    bench::measure(state, "plain table", [&] { delete chain.effect.internalGetEffectWidget(); });
}

void select(MetaWidget &form, int row)
{
    meta::TableWidget &table = *form.m_effectTable;
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {},
                      table.visualRect(table.model()->index(row, 0)).center());
}

// The first child of the chain starts elsewhere: every Start and End cell becomes another.
void editRuleAllMove(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    MetaWidget &form = chain.open();
    form.m_effectTable->scrollToBottom();
    select(form, form.m_effectTable->rowCount() - 1);
    const QString endOfTheLast = form.m_effectTable->text(0, 5);
    int start = 0;
    bench::measure(state, "",
                   [&] { form.m_startFixedLineEdit->setText(QString::number(start++ % 1000)); });
    form.m_startFixedLineEdit->setText(QStringLiteral("5000"));
    if (form.m_effectTable->text(0, 5) == endOfTheLast)
        state.SkipWithError("the edit moved nothing");
}

// The last child of the chain lasts longer: one End cell becomes another.
void editRuleOneMoves(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    MetaWidget &form = chain.open();
    select(form, 0);
    int duration = 0;
    bench::measure(state, "", [&] {
        form.m_endFixedLineEdit->setText(QString::number(1 + duration++ % 1000));
    });
}

// A click on another row: the selection passes through two rows and one, and every widget of the
// panel changes.
void selectRow(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    MetaWidget &form = chain.open();
    keys::startRule.linkStart.write(*chain.effect.getEffects().at(1), true);
    int row = 0;
    bench::measure(state, "", [&] { select(form, row++ % 3); });
}

// The reference of sorting: the keys are made and sorted, and the rows moved.
void plainSort(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    meta::TableWidget &table = *chain.open().m_effectTable;
    const auto rows = static_cast<std::size_t>(table.rowCount());
    std::vector<std::vector<QTableWidgetItem *>> cells(rows);
    for (std::size_t row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            cells[row].push_back(table.item(static_cast<int>(row), column));
    bool ascending = true;
    bench::measureReference(state, "plain sort", [&] {
        std::vector<std::pair<QString, std::size_t>> keys;
        keys.reserve(rows);
        for (std::size_t row = 0; row < rows; ++row)
            keys.emplace_back(static_cast<meta::TableItem *>(cells[row][4])->key(), row);
        if (ascending)
            std::stable_sort(keys.begin(), keys.end(),
                             [](const auto &a, const auto &b) { return a.first < b.first; });
        else
            std::stable_sort(keys.begin(), keys.end(),
                             [](const auto &a, const auto &b) { return b.first < a.first; });
        std::vector<std::vector<QTableWidgetItem *>> moved(rows);
        for (std::size_t row = 0; row < rows; ++row)
            moved[row] = cells[keys[row].second];
        cells = moved;
        ascending = !ascending;
    });
}

void sortRows(benchmark::State &state)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    chain.open();
    bench::measure(state, "plain sort", [&] { chain.effect.handleHeaderClicked(4); });
}

void frame(benchmark::State &state, bool isOpen)
{
    EditedChain chain(static_cast<int>(state.range(0)));
    chain.effect.setState(true);
    chain.effect.setStartTime(QTime(12, 0));
    if (isOpen)
        chain.open();
    const QTime time = QTime(12, 0).addMSecs(5);
    chain.effect.updateLights(time, 0);
    const auto nextFrame = [&] { chain.effect.updateLights(time, 0); };
    if (isOpen)
        bench::measure(state, "frame without editor", nextFrame);
    else
        bench::measureReference(state, "frame without editor", nextFrame);
}

void frameWithoutEditor(benchmark::State &state)
{
    frame(state, false);
}

void frameWithEditor(benchmark::State &state)
{
    frame(state, true);
}

} // namespace

BENCHMARK(plainTable)->Name("plain QTableWidget")->Apply(editorSizes);
BENCHMARK(buildEditor)->Name("editor, building")->Apply(editorSizes);
BENCHMARK(editRuleAllMove)->Name("editor, a rule edit, all move")->Apply(editorSizes);
BENCHMARK(editRuleOneMoves)->Name("editor, a rule edit, one moves")->Apply(editorSizes);
BENCHMARK(selectRow)->Name("editor, selecting a row")->Apply(editorSizes);
BENCHMARK(plainSort)->Name("plain sort")->Apply(editorSizes);
BENCHMARK(sortRows)->Name("editor, sorting")->Apply(editorSizes);
BENCHMARK(frameWithoutEditor)->Name("frame, editor closed")->Apply(editorSizes);
BENCHMARK(frameWithEditor)->Name("frame, editor open")->Apply(editorSizes);
