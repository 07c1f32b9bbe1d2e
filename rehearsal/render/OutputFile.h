#pragma once

#include "FileFault.h"

#include <memory>

class QFileDevice;
class QIODevice;

namespace rehearsal {

/// One text for all the names of a file, which need not be there: where writing it leads to.
QString placeOf(const QString &file);

/// A file that a command writes. A regular file appears whole when it is committed, or not at all;
/// a device or a pipe is written as it is.
class OutputFile
{
public:
    /// Null and a fault when the file cannot be opened for writing.
    static std::unique_ptr<OutputFile> open(const QString &file, FileFault *fault);
    ~OutputFile();

    QIODevice &device();
    /// False and a fault if anything written was lost; the old file, if any, is then still there.
    bool commit(FileFault *fault);

private:
    OutputFile(const QString &file, std::unique_ptr<QFileDevice> device);

    QString m_file;
    std::unique_ptr<QFileDevice> m_device;
};

} // namespace rehearsal
