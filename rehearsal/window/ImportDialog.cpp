#include "ImportDialog.h"

#include "FileField.h"
#include "MessageLine.h"
#include "SingleLine.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedLayout>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace rehearsal {

namespace {

enum ReplacedColumn { CountColumn, TypeColumn };

QTreeWidget *makeReplacedList(QWidget *parent)
{
    auto *list = new QTreeWidget(parent);
    list->setObjectName(QStringLiteral("m_replacedTree"));
    list->setAccessibleName(ImportDialog::tr("Replaced effects"));
    list->setHeaderLabels({ImportDialog::tr("Effects"), ImportDialog::tr("Type in the sequence")});
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    constexpr int rows = 8;
    list->setMinimumHeight(rows * list->fontMetrics().lineSpacing());
    list->header()->setSectionResizeMode(CountColumn, QHeaderView::ResizeToContents);
    return list;
}

QString summaryText(const ImportSummary &summary)
{
    QString text = ImportDialog::tr("Lights: %L1, effects: %L2, linked: %L3.")
                       .arg(summary.lights)
                       .arg(summary.effects)
                       .arg(summary.linked);
    int replaced = 0;
    for (const auto &[type, count] : summary.replaced)
        replaced += count;
    if (replaced > 0) {
        text +=
            u'\n'
            + ImportDialog::tr("Effects without a counterpart, which became a Solid at full: %L1.")
                  .arg(replaced);
    }
    return text;
}

} // namespace

ImportDialog::ImportDialog(const Show::TypeSetup &types, QWidget *parent)
    : QDialog(parent),
      m_types(types),
      m_choices(new QWidget(this)),
      m_file(new FileField(QStringLiteral("sequence"), FileField::Purpose::Open, tr("Sequence"),
                           tr("Sequences (*.xsq);;All files (*)"), m_choices)),
      m_linkAdjacent(new QCheckBox(tr("Link adjacent effects"), m_choices)),
      m_outcome(new QStackedLayout),
      m_progress(new QProgressBar(this)),
      m_message(new MessageLine(this)),
      m_replaced(makeReplacedList(this)),
      m_importButton(new QPushButton(tr("Import"), this)),
      m_openButton(new QPushButton(tr("Open Show"), this)),
      m_cancelButton(new QPushButton(tr("Cancel"), this))
{
    setObjectName(QStringLiteral("ImportDialog"));
    setWindowTitle(tr("Import a Sequence"));
    m_linkAdjacent->setObjectName(QStringLiteral("m_linkAdjacentCheckBox"));
    m_linkAdjacent->setToolTip(
        tr("An effect that starts where the one before it ends is linked to that end"));
    m_linkAdjacent->setChecked(true);
    m_progress->setObjectName(QStringLiteral("m_progressBar"));
    m_message->setObjectName(QStringLiteral("m_message"));
    m_importButton->setObjectName(QStringLiteral("m_importButton"));
    m_openButton->setObjectName(QStringLiteral("m_openButton"));
    m_cancelButton->setObjectName(QStringLiteral("m_cancelButton"));
    layOut();
    refresh();

    connect(m_file, &FileField::edited, this, &ImportDialog::dropShow);
    connect(m_linkAdjacent, &QCheckBox::toggled, this, &ImportDialog::dropShow);
    connect(m_importButton, &QPushButton::clicked, this, &ImportDialog::importNow);
    connect(m_openButton, &QPushButton::clicked, this, &ImportDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        if (m_isImporting)
            cancel();
        else
            reject();
    });
}

ImportDialog::~ImportDialog() = default;

void ImportDialog::layOut()
{
    auto *form = new QFormLayout(m_choices);
    form->setContentsMargins({});
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Sequence:"), m_file);
    form->addRow(QString(), m_linkAdjacent);

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_importButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_openButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_cancelButton, QDialogButtonBox::ActionRole);
    auto *layout = new QVBoxLayout(this);
    m_progress->setMaximumHeight(m_progress->sizeHint().height());
    m_outcome->addWidget(m_message);
    m_outcome->addWidget(m_progress);
    layout->addWidget(m_choices);
    layout->addLayout(m_outcome);
    layout->addWidget(m_replaced, 1);
    layout->addWidget(buttons);
}

void ImportDialog::setSequenceFile(const QString &file)
{
    m_file->setFile(file);
}

QString ImportDialog::sequenceFile() const
{
    return m_file->file();
}

std::unique_ptr<Show> ImportDialog::takeShow()
{
    return std::move(m_show);
}

void ImportDialog::done(int result)
{
    if (m_isImporting)
        cancel();
    if (result != Accepted)
        dropShow();
    QDialog::done(result);
}

// --- Importing ---

void ImportDialog::importNow()
{
    dropShow();
    if (sequenceFile().isEmpty()) {
        m_message->showFault(tr("There is no name for the sequence."));
        m_file->setFocus();
        return;
    }
    m_isImporting = true;
    m_isCancelled = false;
    refresh();
    const QPointer<ImportDialog> self(this);
    ImportSummary summary;
    FileFault fault;
    std::unique_ptr<Show> show = import(&summary, &fault);
    if (!self)
        return;
    m_isImporting = false;
    m_show = std::move(show);
    refresh();
    if (m_show)
        showSummary(summary);
    else if (fault.what.isEmpty())
        m_message->showResult(tr("Cancelled: there is no show."));
    else
        m_message->showFault(fault.message());
}

std::unique_ptr<Show> ImportDialog::import(ImportSummary *summary, FileFault *fault)
{
    m_sinceServed.start();
    const QPointer<ImportDialog> self(this);
    const Show::TypeSetup types = m_types; // the dialog may go before it is done
    return importSequence(sequenceFile(), types, {.linkAdjacent = m_linkAdjacent->isChecked()},
                          summary, fault,
                          [self](int percent) { return self && self->goOn(percent); });
}

bool ImportDialog::goOn(int percent)
{
    constexpr qint64 sliceMs = 15;
    if (m_sinceServed.elapsed() < sliceMs)
        return true;
    m_progress->setValue(percent);
    const QPointer<ImportDialog> self(this);
    QCoreApplication::processEvents();
    if (!self || m_isCancelled)
        return false;
    m_sinceServed.restart();
    return true;
}

void ImportDialog::cancel()
{
    m_isCancelled = true;
}

void ImportDialog::dropShow()
{
    m_show.reset();
    m_message->clear();
    m_replaced->clear();
    refresh();
}

// --- What is shown ---

void ImportDialog::showSummary(const ImportSummary &summary)
{
    m_message->showResult(summaryText(summary));
    for (const auto &[type, count] : summary.replaced) {
        auto *item = new QTreeWidgetItem(m_replaced);
        item->setData(CountColumn, Qt::DisplayRole, count);
        item->setTextAlignment(CountColumn, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(TypeColumn, type.isEmpty() ? tr("(no name)") : singleLine(type));
    }
    m_replaced->sortItems(CountColumn, Qt::DescendingOrder);
    m_replaced->setHidden(summary.replaced.empty());
}

void ImportDialog::refresh()
{
    m_choices->setEnabled(!m_isImporting);
    m_importButton->setVisible(!m_show);
    m_importButton->setEnabled(!m_isImporting);
    m_openButton->setVisible(m_show != nullptr);
    (m_show ? m_openButton : m_importButton)->setDefault(true);
    m_progress->reset();
    m_outcome->setCurrentWidget(m_isImporting ? static_cast<QWidget *>(m_progress) : m_message);
    m_replaced->setHidden(m_replaced->topLevelItemCount() == 0);
}

} // namespace rehearsal
