#include "Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

#include <array>

namespace rehearsal {

namespace {

constexpr std::array<std::pair<Appearance, const char *>, 3> names{
    {{Appearance::System, "system"}, {Appearance::Light, "light"}, {Appearance::Dark, "dark"}}};

struct Shades
{
    QColor window;
    QColor base;
    QColor alternate;
    QColor button;
    QColor text;
    QColor faintText;
    QColor accent;
    QColor accentText;
    QColor link;
};

const Shades lightShades{QColor(0xf0f1f3), QColor(0xffffff), QColor(0xf6f7f9),
                         QColor(0xe6e8eb), QColor(0x1d2126), QColor(0x8a9099),
                         QColor(0x2f6fb5), QColor(0xffffff), QColor(0x1f5fa8)};
const Shades darkShades{QColor(0x25282d), QColor(0x1b1d21), QColor(0x212429),
                        QColor(0x31353b), QColor(0xe4e7eb), QColor(0x7d848e),
                        QColor(0x3f83cf), QColor(0xffffff), QColor(0x7db4f0)};

QPalette paletteOf(const Shades &shades)
{
    QPalette palette(shades.text, shades.button, shades.button.lighter(130),
                     shades.button.darker(150), shades.button.darker(120), shades.text, shades.text,
                     shades.base, shades.window);
    palette.setColor(QPalette::AlternateBase, shades.alternate);
    palette.setColor(QPalette::Highlight, shades.accent);
    palette.setColor(QPalette::HighlightedText, shades.accentText);
    palette.setColor(QPalette::Link, shades.link);
    palette.setColor(QPalette::ToolTipBase, shades.base);
    palette.setColor(QPalette::ToolTipText, shades.text);
    palette.setColor(QPalette::PlaceholderText, shades.faintText);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, shades.faintText);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, shades.button);
    return palette;
}

} // namespace

void applyAppearance(Appearance appearance)
{
    static const QString systemStyle = QApplication::style()->name();
    if (appearance == Appearance::System) {
        QApplication::setStyle(systemStyle);
        QApplication::setPalette(QPalette());
        return;
    }
    // The style that follows a palette to the letter.
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(paletteOf(appearance == Appearance::Dark ? darkShades : lightShades));
}

QString appearanceName(Appearance appearance)
{
    for (const auto &[known, name] : names) {
        if (known == appearance)
            return QString::fromLatin1(name);
    }
    return {};
}

Appearance appearanceNamed(const QString &name)
{
    for (const auto &[appearance, known] : names) {
        if (name == QLatin1String(known))
            return appearance;
    }
    return Appearance::System;
}

} // namespace rehearsal
