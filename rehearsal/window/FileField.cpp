#include "FileField.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace rehearsal {

FileField::FileField(const QString &stem, Purpose purpose, const QString &title,
                     const QString &filter, QWidget *parent)
    : QWidget(parent),
      m_stem(stem),
      m_purpose(purpose),
      m_title(title),
      m_filter(filter),
      m_folder(QDir::currentPath()),
      m_name(new QLineEdit(this)),
      m_browse(new QPushButton(tr("Browse…"), this))
{
    m_name->setObjectName(QStringLiteral("m_%1LineEdit").arg(stem));
    m_name->setAccessibleName(title);
    m_browse->setObjectName(QStringLiteral("m_%1BrowseButton").arg(stem));
    m_browse->setAutoDefault(false);
    setFocusProxy(m_name);

    constexpr int usualWidth = 45; // characters
    m_name->setMinimumWidth(usualWidth * m_name->fontMetrics().averageCharWidth());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_name, 1);
    layout->addWidget(m_browse);

    connect(m_name, &QLineEdit::textChanged, this, &FileField::edited);
    connect(m_browse, &QPushButton::clicked, this, &FileField::browse);
}

QString FileField::file() const
{
    const QString name = m_name->text().trimmed();
    return name.isEmpty() ? QString() : QDir::cleanPath(QDir(m_folder).absoluteFilePath(name));
}

void FileField::setFile(const QString &file)
{
    m_name->setText(QDir::toNativeSeparators(file));
}

// Without an event loop of its own: the form may go while the file dialog is up.
void FileField::browse()
{
    auto *dialog = new QFileDialog(this, m_title, file().isEmpty() ? m_folder : file(), m_filter);
    dialog->setObjectName(QStringLiteral("m_%1FileDialog").arg(m_stem));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const bool opens = m_purpose == Purpose::Open;
    dialog->setAcceptMode(opens ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dialog->setFileMode(opens ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog->setDefaultSuffix(m_suffix);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &file) {
        setFile(file);
        emit chosen(file);
    });
    dialog->open();
}

} // namespace rehearsal
