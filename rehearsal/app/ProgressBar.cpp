#include "ProgressBar.h"

#include "Console.h"

namespace rehearsal {

ProgressBar::ProgressBar(Console &console, qint64 total) : m_console(console), m_total(total)
{
    m_sinceShown.start();
}

ProgressBar::~ProgressBar()
{
    if (m_isShown)
        m_console.showPassing({});
}

void ProgressBar::update(qint64 done)
{
    constexpr int refreshMs = 100;
    constexpr int width = 40;
    if (!m_console.showsProgress() || m_total <= 0 || m_sinceShown.elapsed() < refreshMs)
        return;
    m_sinceShown.restart();
    m_isShown = true;
    const int filled = static_cast<int>(done * width / m_total);
    m_console.showPassing(QStringLiteral("[%1%2] %3 %")
                              .arg(QString(filled, u'#'), QString(width - filled, u' '))
                              .arg(done * 100 / m_total, 3));
}

} // namespace rehearsal
