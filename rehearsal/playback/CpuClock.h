#pragma once

#include <QtGlobal>

namespace rehearsal {

/// The processor time that the calling thread has used so far, ns.
qint64 threadCpuNs();

} // namespace rehearsal
