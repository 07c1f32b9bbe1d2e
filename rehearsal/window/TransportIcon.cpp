#include "TransportIcon.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace rehearsal {

namespace {

// Every symbol is drawn in a square of this side.
constexpr qreal side = 24;

QPainterPath triangle(QPointF a, QPointF b, QPointF c)
{
    QPainterPath path(a);
    path.lineTo(b);
    path.lineTo(c);
    path.closeSubpath();
    return path;
}

QPainterPath filledPath(TransportSymbol symbol)
{
    QPainterPath path;
    switch (symbol) {
    case TransportSymbol::Play: path = triangle({6, 3}, {21, 12}, {6, 21}); break;
    case TransportSymbol::Pause:
        path.addRect(5, 4, 5, 16);
        path.addRect(14, 4, 5, 16);
        break;
    case TransportSymbol::Stop: path.addRect(5, 5, 14, 14); break;
    case TransportSymbol::Restart:
        path.addRect(4, 4, 3, 16);
        path.addPath(triangle({20, 4}, {20, 20}, {8, 12}));
        break;
    case TransportSymbol::Loop:
        path = triangle({15, 1}, {22, 6}, {15, 11});
        path.addPath(triangle({9, 13}, {2, 18}, {9, 23}));
        break;
    }
    return path;
}

/// What is drawn as a line.
QPainterPath line(TransportSymbol symbol)
{
    QPainterPath path;
    if (symbol != TransportSymbol::Loop)
        return path;
    path.moveTo(4, 12);
    path.lineTo(4, 6);
    path.lineTo(16, 6);
    path.moveTo(20, 12);
    path.lineTo(20, 18);
    path.lineTo(8, 18);
    return path;
}

class SymbolEngine final : public QIconEngine
{
public:
    explicit SymbolEngine(TransportSymbol symbol) : m_symbol(symbol) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QApplication::palette();
        const QColor colour = palette.color(
            mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active, QPalette::ButtonText);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / side, rect.height() / side);
        painter->strokePath(line(m_symbol), QPen(colour, 2.5));
        painter->fillPath(filledPath(m_symbol), colour);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({}, size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new SymbolEngine(m_symbol); }

private:
    TransportSymbol m_symbol;
};

} // namespace

QIcon transportIcon(TransportSymbol symbol)
{
    return QIcon(new SymbolEngine(symbol));
}

} // namespace rehearsal
