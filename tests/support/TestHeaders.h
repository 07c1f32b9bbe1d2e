#pragma once

// What most tests include, to be precompiled. A test includes by itself what it needs.

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <vector>
