#include "RenderDialog.h"

#include "FileField.h"
#include "MessageLine.h"
#include "OutputFile.h"
#include "RenderJob.h"
#include "ShowFile.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <limits>
#include <utility>

namespace rehearsal {

namespace {

constexpr double longestSeconds = std::numeric_limits<quint32>::max() / 1000.0;

QString framesText(qint64 count)
{
    return count == 1 ? RenderDialog::tr("1 frame") : RenderDialog::tr("%L1 frames").arg(count);
}

QDoubleSpinBox *makeNumber(const char *name, double least, double most, int decimals, double value,
                           QWidget *parent)
{
    auto *box = new QDoubleSpinBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setDecimals(decimals);
    box->setRange(least, most);
    box->setValue(value);
    return box;
}

} // namespace

QString RenderDialog::Output::file() const
{
    return box->isChecked() ? field->file() : QString();
}

RenderDialog::RenderDialog(const Show::TypeSetup &types, QWidget *parent)
    : QDialog(parent),
      m_types(types),
      m_choices(new QWidget(this)),
      m_outcome(new QStackedLayout),
      m_progress(new QProgressBar(this)),
      m_message(new MessageLine(this)),
      m_renderButton(new QPushButton(tr("Render"), this)),
      m_cancelButton(new QPushButton(tr("Cancel"), this)),
      m_closeButton(new QPushButton(tr("Close"), this))
{
    setObjectName(QStringLiteral("RenderDialog"));
    m_progress->setObjectName(QStringLiteral("m_progressBar"));
    m_message->setObjectName(QStringLiteral("m_message"));
    m_renderButton->setObjectName(QStringLiteral("m_renderButton"));
    m_cancelButton->setObjectName(QStringLiteral("m_cancelButton"));
    m_closeButton->setObjectName(QStringLiteral("m_closeButton"));
    m_renderButton->setDefault(true);
    layOut();
    suggestNames();
    refreshButtons();

    connect(m_renderButton, &QPushButton::clicked, this, &RenderDialog::handleRender);
    connect(m_cancelButton, &QPushButton::clicked, this, &RenderDialog::cancel);
    connect(m_closeButton, &QPushButton::clicked, this, &RenderDialog::reject);
}

RenderDialog::~RenderDialog() = default;

// --- The form ---

RenderDialog::Output RenderDialog::makeOutput(const QString &stem, const QString &name,
                                              const QString &suffix, const QString &filter)
{
    const Output output{new QCheckBox(name + u':', m_choices),
                        new FileField(stem, FileField::Purpose::Save, name, filter, m_choices)};
    output.box->setObjectName(QStringLiteral("m_%1CheckBox").arg(stem));
    output.field->setDefaultSuffix(suffix);
    output.field->setEnabled(false);
    connect(output.box, &QCheckBox::toggled, output.field, &QWidget::setEnabled);
    connect(output.field, &FileField::chosen, this,
            [this](const QString &file) { m_replaceable.insert(placeOf(file)); });
    return output;
}

QWidget *RenderDialog::makeLength()
{
    auto *row = new QWidget(m_choices);
    m_wholeRun = new QRadioButton(tr("one run of the longest effect"), row);
    m_wholeRun->setObjectName(QStringLiteral("m_wholeRunRadioButton"));
    m_wholeRun->setChecked(true);
    m_seconds = new QRadioButton(tr("seconds:"), row);
    m_seconds->setObjectName(QStringLiteral("m_secondsRadioButton"));
    m_secondsCount = makeNumber("m_secondsSpinBox", 0.001, longestSeconds, 3, 10, row);
    m_secondsCount->setAccessibleName(tr("Seconds"));
    m_secondsCount->setEnabled(false);
    connect(m_seconds, &QRadioButton::toggled, m_secondsCount, &QWidget::setEnabled);

    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    layout->addWidget(m_wholeRun);
    layout->addWidget(m_seconds);
    layout->addWidget(m_secondsCount);
    layout->addStretch();
    return row;
}

void RenderDialog::layOut()
{
    m_picture = makeOutput(QStringLiteral("picture"), tr("Picture"), QStringLiteral("png"),
                           tr("Pictures (*.png)"));
    m_picture.box->setToolTip(tr("Lights down, time across, brightness as grey"));
    m_picture.box->setChecked(true);
    m_table = makeOutput(QStringLiteral("table"), tr("Table"), QStringLiteral("csv"),
                         tr("Tables (*.csv)"));
    m_table.box->setToolTip(tr("A row a frame, a column a light, comma-separated"));
    constexpr double leastFps = 1;
    m_fps = makeNumber("m_fpsSpinBox", leastFps, FrameTimes::highestFps, 2, RenderPlan().fps,
                       m_choices);
    m_fps->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto *form = new QFormLayout(m_choices);
    form->setContentsMargins({});
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(m_picture.box, m_picture.field);
    form->addRow(m_table.box, m_table.field);
    form->addRow(tr("Frames a second:"), m_fps);
    form->addRow(tr("Length:"), makeLength());

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_renderButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_cancelButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_closeButton, QDialogButtonBox::ActionRole);
    auto *layout = new QVBoxLayout(this);
    m_progress->setMaximumHeight(m_progress->sizeHint().height());
    m_outcome->addWidget(m_message);
    m_outcome->addWidget(m_progress);
    layout->addWidget(m_choices);
    layout->addLayout(m_outcome);
    layout->addWidget(buttons);
}

void RenderDialog::suggestNames()
{
    const QFileInfo show(m_showFile);
    const QDir folder = m_showFile.isEmpty() ? QDir::home() : show.absoluteDir();
    const QString name = m_showFile.isEmpty() ? tr("untitled") : show.completeBaseName();
    m_picture.field->setFolder(folder.path());
    m_picture.field->setFile(folder.filePath(name + QStringLiteral(".png")));
    m_table.field->setFolder(folder.path());
    m_table.field->setFile(folder.filePath(name + QStringLiteral(".csv")));
    setWindowTitle(m_showFile.isEmpty() ? tr("Render") : tr("Render %1").arg(show.fileName()));
}

void RenderDialog::setShow(const QByteArray &text, const QString &file)
{
    m_text = text;
    if (file != m_showFile) {
        m_showFile = file;
        suggestNames();
    }
    if (!isRendering())
        m_message->clear();
}

// --- What is asked for ---

RenderPlan RenderDialog::plan() const
{
    RenderPlan plan;
    plan.fps = m_fps->value();
    if (m_seconds->isChecked())
        plan.lengthMs = static_cast<quint32>(qRound64(m_secondsCount->value() * 1000));
    plan.tableFile = m_table.file();
    plan.pictureFile = m_picture.file();
    return plan;
}

QString RenderDialog::faultOfChoices(QWidget **place) const
{
    *place = m_picture.box;
    if (!m_picture.box->isChecked() && !m_table.box->isChecked())
        return tr("Nothing is to be written: choose a picture, a table or both.");
    for (const Output &output : {m_picture, m_table}) {
        *place = output.field;
        if (!output.box->isChecked())
            continue;
        if (output.file().isEmpty())
            return tr("There is no name for the file.");
        if (!m_showFile.isEmpty() && placeOf(output.file()) == placeOf(m_showFile))
            return tr("%1 is the show itself, which would be overwritten.").arg(output.file());
    }
    if (m_picture.box->isChecked() && m_table.box->isChecked()
        && placeOf(m_picture.file()) == placeOf(m_table.file()))
        return tr("The picture and the table cannot be the same file.");
    return {};
}

QStringList RenderDialog::filesToReplace() const
{
    QStringList files;
    for (const Output &output : {m_picture, m_table}) {
        if (QFileInfo(output.file()).isFile() && !m_replaceable.contains(placeOf(output.file())))
            files.append(output.file());
    }
    return files;
}

// --- Rendering ---

void RenderDialog::handleRender()
{
    emit showWanted();
    QWidget *place = nullptr;
    const QString fault = faultOfChoices(&place);
    if (!fault.isEmpty()) {
        m_message->showFault(fault);
        place->setFocus();
        return;
    }
    const QStringList files = filesToReplace();
    if (files.isEmpty())
        start();
    else
        askToReplace(files);
}

// Without an event loop of its own: the program may close the dialog while the question is up.
void RenderDialog::askToReplace(const QStringList &files)
{
    auto *box = new QMessageBox(QMessageBox::Question, windowTitle(),
                                tr("%1 is there already.").arg(files.join(tr(" and "))),
                                QMessageBox::Cancel, this);
    box->setObjectName(QStringLiteral("m_replaceBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    QPushButton *replace = box->addButton(tr("Replace"), QMessageBox::AcceptRole);
    box->setDefaultButton(QMessageBox::Cancel);
    connect(replace, &QPushButton::clicked, this, [this, files] {
        for (const QString &file : files)
            m_replaceable.insert(placeOf(file));
        start();
    });
    box->open();
}

void RenderDialog::start()
{
    m_message->clear();
    const RenderPlan started = plan();
    FileFault fault;
    const QString title = m_showFile.isEmpty() ? tr("untitled") : QFileInfo(m_showFile).fileName();
    std::unique_ptr<Show> show = parseShow(m_text, title, m_types, &fault);
    std::unique_ptr<ShowRender> render =
        show ? ShowRender::begin(std::move(show), title, started, &fault) : nullptr;
    if (!render) {
        m_message->showFault(fault.message());
        return;
    }
    m_job = new RenderJob(std::move(render), this);
    connect(m_job, &RenderJob::progressed, this, &RenderDialog::refreshProgress);
    connect(m_job, &RenderJob::finished, this, [this, started] { tellDone(started); });
    connect(m_job, &RenderJob::failed, this, [this](const FileFault &writeFault) {
        endJob();
        m_message->showFault(writeFault.message());
        setVisible(true); // it may have been closed while the files were written
    });
    refreshButtons();
    refreshProgress();
}

void RenderDialog::tellDone(const RenderPlan &done)
{
    QStringList files{done.pictureFile, done.tableFile};
    files.removeAll(QString());
    for (const QString &file : std::as_const(files))
        m_replaceable.insert(placeOf(file));
    const FrameTimes times = m_job->render().times();
    endJob();
    m_message->showResult(tr("%1 in %2 s written to\n%3")
                              .arg(framesText(times.count()),
                                   QString::number(times.lengthMs() / 1000.0, 'g', 10),
                                   files.join(u'\n')));
}

void RenderDialog::cancel()
{
    delete std::exchange(m_job, nullptr);
    refreshButtons();
    m_message->showResult(tr("Cancelled: nothing was written."));
}

void RenderDialog::endJob()
{
    std::exchange(m_job, nullptr)->deleteLater();
    refreshButtons();
}

void RenderDialog::done(int result)
{
    if (isRendering() && !m_job->isWriting())
        cancel();
    QDialog::done(result);
}

// --- What is shown ---

void RenderDialog::refreshButtons()
{
    const bool renders = isRendering();
    m_choices->setEnabled(!renders);
    m_renderButton->setEnabled(!renders);
    m_cancelButton->setVisible(renders);
    m_closeButton->setVisible(!renders);
    m_progress->reset();
    m_outcome->setCurrentWidget(renders ? static_cast<QWidget *>(m_progress) : m_message);
}

void RenderDialog::refreshProgress()
{
    constexpr int wholeBar = 1000;
    const ShowRender &render = m_job->render();
    const qint64 total = render.times().count();
    m_cancelButton->setEnabled(!m_job->isWriting());
    m_progress->setRange(0, wholeBar);
    m_progress->setValue(total > 0 ? static_cast<int>(render.framesDone() * wholeBar / total)
                                   : wholeBar);
    m_progress->setFormat(m_job->isWriting()
                              ? tr("writing")
                              : tr("frame %L1 of %L2").arg(render.framesDone()).arg(total));
}

} // namespace rehearsal
