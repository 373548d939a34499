#include "TestMain.h"

#include <QApplication>
#include <QTest>

#include <memory>
#include <vector>

namespace {
struct Entry {
    const char* name;
    TestMain::Factory factory;
};

std::vector<Entry>& registry()
{
    static std::vector<Entry> entries;
    return entries;
}
} // namespace

int TestMain::registerTestClass(const char* name, Factory factory)
{
    registry().push_back({name, std::move(factory)});
    return int(registry().size());
}

// Runs every registered class; an optional first argument "-class Name" runs
// only that one, the remaining arguments go to QTest as usual.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    QStringList args = app.arguments();
    QString only;
    if (args.size() > 2 && args.at(1) == QLatin1String("-class")) {
        only = args.at(2);
        args.remove(1, 2);
    }

    int failures = 0;
    for (const Entry& entry : registry()) {
        if (!only.isEmpty() && only != QLatin1String(entry.name))
            continue;
        std::unique_ptr<QObject> test(entry.factory());
        failures += QTest::qExec(test.get(), args);
    }
    return failures == 0 ? 0 : 1;
}
