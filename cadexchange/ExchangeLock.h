#pragma once

#include <mutex>

namespace Zemtar {

/// One import or export at a time: the SDK's parallelism, the list of what its engine refused and standard
/// error belong to the process. Another thread waits; on the same thread, a call within a call goes on.
inline std::recursive_mutex& ExchangeLock()
{
    static std::recursive_mutex lock;
    return lock;
}

} // namespace Zemtar
