#include "OutputFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace rehearsal {

namespace {

FileFault writeFault(const QString &file, const QFileDevice &device)
{
    return {file, 0, QStringLiteral("cannot be written: %1").arg(device.errorString())};
}

} // namespace

QString placeOf(const QString &file)
{
    constexpr int mostLinks = 128; // some lead in a circle
    QFileInfo info(file);
    for (int link = 0; !info.exists() && info.isSymLink() && link < mostLinks; ++link)
        info.setFile(info.symLinkTarget());
    QString place = info.canonicalFilePath();
    if (!place.isEmpty())
        return place;
    // It is not there, or there without a name, as a pipe may be.
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? info.absoluteFilePath() : QDir(folder).filePath(info.fileName());
}

OutputFile::OutputFile(const QString &file, std::unique_ptr<QFileDevice> device)
    : m_file(file), m_device(std::move(device))
{
}

OutputFile::~OutputFile() = default;

std::unique_ptr<OutputFile> OutputFile::open(const QString &file, FileFault *fault)
{
    const QFileInfo info(file);
    const bool isSpecial = info.exists() && !info.isFile() && !info.isDir();
    std::unique_ptr<QFileDevice> device;
    if (isSpecial)
        device = std::make_unique<QFile>(file);
    else
        device = std::make_unique<QSaveFile>(file);
    if (!device->open(QIODevice::WriteOnly)) {
        *fault = writeFault(file, *device);
        return {};
    }
    return std::unique_ptr<OutputFile>(new OutputFile(file, std::move(device)));
}

QIODevice &OutputFile::device()
{
    return *m_device;
}

bool OutputFile::commit(FileFault *fault)
{
    auto *saveFile = qobject_cast<QSaveFile *>(m_device.get());
    const bool isWhole =
        saveFile ? saveFile->commit() : m_device->flush() && m_device->error() == QFile::NoError;
    if (!isWhole)
        *fault = writeFault(m_file, *m_device);
    return isWhole;
}

} // namespace rehearsal
