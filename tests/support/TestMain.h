#pragma once

#include <QTest>

#include <functional>

/// Gives the process a settings folder of its own and an application identity, and runs the test.
int runTestObject(QObject& test, int argc, char* argv[]);

/// From here to the end of the test function every warning is a failure, but for what a test's screen can't do.
void failOnWarnings();

/// A main for `Class` with an application of type `App`.
#define NORVO_TEST_MAIN(App, Class)                                                                                    \
    int main(int argc, char* argv[])                                                                                   \
    {                                                                                                                  \
        const App app(argc, argv);                                                                                     \
        Class test;                                                                                                    \
        return runTestObject(test, argc, argv);                                                                        \
    }
