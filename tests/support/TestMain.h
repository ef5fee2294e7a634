// SPDX-License-Identifier: MIT
#pragma once

#include <QDeadlineTimer>
#include <QTest>

#include <functional>

/// Gives the process a settings folder of its own and an application identity, and runs the test.
int runTestObject(QObject& test, int argc, char* argv[]);

/// From here to the end of the test function every warning is a failure, but for what a test's screen can't do.
void failOnWarnings();

/// Names the columns of a test's table. Returns what adds a row to it: from a name and a value for each column.
template <typename... Columns, typename... Names> auto addColumns(Names... names)
{
    (QTest::addColumn<Columns>(names), ...);
    return +[](const char* name, const Columns&... values) { (QTest::newRow(name) << ... << values); };
}

// Qt 6.8's own QTRY_ macros store a count of milliseconds in an int, which warns wherever one is used. These are the
// same waits without that; they look every 10 ms, not every 50.
#undef QTRY_VERIFY_WITH_TIMEOUT
#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE_WITH_TIMEOUT
#undef QTRY_COMPARE
#define NORVO_WAIT_FOR(condition, timeout)                                                                             \
    for (const QDeadlineTimer deadlineOfWait(timeout); !(condition) && !deadlineOfWait.hasExpired();)                  \
    QTest::qWait(10)
#define QTRY_VERIFY_WITH_TIMEOUT(condition, timeout)                                                                   \
    do {                                                                                                               \
        NORVO_WAIT_FOR(condition, timeout);                                                                            \
        QVERIFY(condition);                                                                                            \
    } while (false)
#define QTRY_COMPARE_WITH_TIMEOUT(actual, expected, timeout)                                                           \
    do {                                                                                                               \
        NORVO_WAIT_FOR((actual) == (expected), timeout);                                                               \
        QCOMPARE(actual, expected);                                                                                    \
    } while (false)
#define QTRY_VERIFY2(condition, message)                                                                               \
    do {                                                                                                               \
        NORVO_WAIT_FOR(condition, 20000);                                                                              \
        QVERIFY2(condition, message);                                                                                  \
    } while (false)
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 20000)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 20000)

/// A main for `Class` with an application of type `App`.
#define NORVO_TEST_MAIN(App, Class)                                                                                    \
    int main(int argc, char* argv[])                                                                                   \
    {                                                                                                                  \
        const App app(argc, argv);                                                                                     \
        Class test;                                                                                                    \
        return runTestObject(test, argc, argv);                                                                        \
    }
