#pragma once

#include "MetaWidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTest>

/// Fails the test unless the form shows no child: panels disabled and empty, the common title.
inline void checkPanelIsBlank(const MetaWidget &form)
{
    QCOMPARE(form.m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());
    QCOMPARE(form.m_startFixedLineEdit->text(), QString());
    QCOMPARE(form.m_startLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_startLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endFixedLineEdit->text(), QString());
    QCOMPARE(form.m_endLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_endLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endCyclesSpinBox->value(), 1);
}
