#include "ProgramIcon.h"

#include <QImage>
#include <QTest>

class tst_ProgramIcon : public QObject
{
    Q_OBJECT

private slots:
    void isThereInEverySize();
};

void tst_ProgramIcon::isThereInEverySize()
{
    const QIcon icon = rehearsal::programIcon();
    QList<QSize> sizes = icon.availableSizes();
    QCOMPARE(sizes.size(), 8);
    for (const QSize size : std::as_const(sizes)) {
        const QImage image = icon.pixmap(size).toImage();
        QCOMPARE(image.size(), size);
        // A dark ground with a light on it, and nothing in the corners.
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        const QColor light = image.pixelColor(size.width() * 196 / 256, size.height() * 84 / 256);
        QVERIFY2(light.lightness() > 150, qPrintable(light.name()));
        const QColor ground = image.pixelColor(size.width() / 2, size.height() * 240 / 256);
        QVERIFY2(ground.lightness() < 60, qPrintable(ground.name(QColor::HexArgb)));
    }
}

QTEST_MAIN(tst_ProgramIcon)
#include "tst_ProgramIcon.moc"
