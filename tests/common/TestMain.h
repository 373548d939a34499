#pragma once

#include <QObject>

#include <functional>

// Every test program of this project is made of several test classes, one per
// source file. A file registers its class with SC_TEST(ClassName); the shared
// main() builds a QApplication and runs all registered classes in turn.
namespace TestMain {
using Factory = std::function<QObject*()>;
int registerTestClass(const char* name, Factory factory);
}

#define SC_TEST(Class)                                                                        \
    static const int s_registered_##Class =                                                   \
        TestMain::registerTestClass(#Class, [] { return static_cast<QObject*>(new Class); });
