// Waiting for windows: by events, with a limit that a busy machine does not reach, and with a word of what
// did not come.
#pragma once

#include <QTest>

#include <gtest/gtest.h>

#include <string>

namespace Zemtar::Test {

/// Milliseconds; waits end as soon as what they wait for is there.
inline constexpr int Patience = 240000;

/// Runs events until `isThere` says so. A failure names what was waited for.
template <typename Condition>
testing::AssertionResult Await(const std::string& what, Condition isThere)
{
    return QTest::qWaitFor(isThere, Patience)
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "waited " << Patience / 1000 << " s for " << what;
}

} // namespace Zemtar::Test
