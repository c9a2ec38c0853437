// Loads a library, as "pavo-bench-loader LIBRARY", and says what that has added to the memory of a
// process that has Qt's core already.

#include "bench/Usage.h"

#include <QCoreApplication>
#include <QLibrary>

#include <iostream>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const MemoryUse before = memoryUse();
    QLibrary library(QCoreApplication::arguments().value(1));
    if (!library.load()) {
        std::cerr << library.errorString().toStdString() << '\n';
        return 1;
    }
    const MemoryUse after = memoryUse();
    std::cout << after.resident - before.resident << ' ' << after.own - before.own << '\n';
    return 0;
}
