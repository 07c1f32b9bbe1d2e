#include "TransportBar.h"

#include "Playback.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>

#include <algorithm>
#include <array>
#include <limits>

namespace rehearsal {

namespace {

constexpr std::array speeds{0.25, 0.5, 0.75, 1.0, 1.5, 2.0, 3.0, 4.0};

/// A slider that goes to where it is clicked.
class SeekSlider final : public QSlider
{
public:
    using QSlider::QSlider;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton)
            setValue(QStyle::sliderValueFromPosition(minimum(), maximum(),
                                                     qRound(event->position().x()), width()));
        QSlider::mousePressEvent(event);
    }
};

} // namespace

TransportBar::TransportBar(Playback &playback, const QList<QAction *> &actions, QWidget *parent)
    : QToolBar(tr("Transport"), parent),
      m_playback(playback),
      m_clock(new QLabel(this)),
      m_length(new QLabel(this)),
      m_slider(new SeekSlider(Qt::Horizontal, this)),
      m_speed(new QComboBox(this))
{
    setObjectName(QStringLiteral("transportBar"));
    addActions(actions);

    m_clock->setObjectName(QStringLiteral("clock"));
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    m_length->setFont(font);
    font.setPointSizeF(font.pointSizeF() * 1.5);
    font.setBold(true);
    m_clock->setFont(font);
    m_clock->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_clock->setMinimumWidth(
        m_clock->fontMetrics().horizontalAdvance(QStringLiteral("0:00:00.000 ")));
    m_clock->setAccessibleName(tr("Place in the show"));
    m_length->setObjectName(QStringLiteral("length"));
    m_length->setContentsMargins(4, 0, 8, 0);
    m_length->setAccessibleName(tr("Length of the show"));

    m_slider->setObjectName(QStringLiteral("seekSlider"));
    m_slider->setAccessibleName(tr("Seek"));
    m_slider->setToolTip(tr("Seek"));
    m_slider->setSingleStep(100);
    m_slider->setPageStep(1000);
    connect(m_slider, &QSlider::valueChanged, this, &TransportBar::seekToSlider);

    m_speed->setObjectName(QStringLiteral("speedBox"));
    m_speed->setToolTip(tr("Speed"));
    m_speed->setAccessibleName(tr("Speed"));
    for (const double speed : speeds)
        m_speed->addItem(tr("%1 ×").arg(speed), speed);
    m_speed->setCurrentIndex(m_speed->findData(1.0));
    connect(m_speed, &QComboBox::currentIndexChanged, this,
            [this] { m_playback.setSpeed(m_speed->currentData().toDouble()); });

    addWidget(m_clock);
    addWidget(m_length);
    addWidget(m_slider);
    addWidget(m_speed);
    connect(&playback, &Playback::frameShown, this, &TransportBar::showPlace);
    connect(&playback, &Playback::stateChanged, this, &TransportBar::showPlace);
    showPlace();
}

void TransportBar::changeSpeed(int steps)
{
    m_speed->setCurrentIndex(std::clamp(m_speed->currentIndex() + steps, 0, m_speed->count() - 1));
}

void TransportBar::setSpeed(double speed)
{
    const int index = m_speed->findData(speed);
    if (index >= 0)
        m_speed->setCurrentIndex(index);
}

void TransportBar::showPlace()
{
    m_clock->setText(clockText(m_playback.position()));
    m_length->setText(tr("/ %1").arg(clockText(m_playback.length())));
    const QSignalBlocker silent(m_slider);
    constexpr quint32 most = std::numeric_limits<int>::max();
    m_slider->setMaximum(static_cast<int>(std::min(m_playback.length(), most)));
    if (!m_slider->isSliderDown())
        m_slider->setValue(static_cast<int>(std::min(m_playback.position(), most)));
}

void TransportBar::seekToSlider()
{
    m_playback.seek(static_cast<quint32>(m_slider->value()));
}

QString clockText(quint32 ms)
{
    const quint32 seconds = ms / 1000;
    const QString rest = QStringLiteral("%1.%2")
                             .arg(seconds % 60, 2, 10, QLatin1Char('0'))
                             .arg(ms % 1000, 3, 10, QLatin1Char('0'));
    const quint32 minutes = seconds / 60;
    if (minutes < 60)
        return QStringLiteral("%1:%2").arg(minutes).arg(rest);
    return QStringLiteral("%1:%2:%3")
        .arg(minutes / 60)
        .arg(minutes % 60, 2, 10, QLatin1Char('0'))
        .arg(rest);
}

} // namespace rehearsal
