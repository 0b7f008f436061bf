// The borders at which bytes from outside enter, one target each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Zemtar::Fuzz {

struct Target
{
    const char* name;
    /// Feeds the bytes to the border. Returns for all of them: what must not be (a fault, a result that
    /// breaks a promise) ends the process.
    void (*run)(const Target& target, std::string_view bytes);
    /// Sound inputs to begin with, made by our own writers and from the examples; none is longer than 64 kB.
    std::vector<std::string> (*seeds)(const Target& target);
    /// Bytes up to which inputs grow.
    std::size_t longest = 1 << 16;
};

/// All targets of this build.
const std::vector<Target>& Targets();
const Target* FindTarget(std::string_view name);

// Each source's part of the list.
std::vector<Target> ReaderTargets();
std::vector<Target> TextTargets();
std::vector<Target> HostTargets();
std::vector<Target> ImageTargets();

/// Ends the process, saying why, unless the promise holds.
void Require(bool holds, const char* promise);

/// The seeds of a target as files of the folder, which is made.
void WriteSeeds(const Target& target, const std::string& folder);

/// Bytes of a file; empty when there is none.
std::string BytesOf(const std::string& file);
void WriteBytes(const std::string& file, std::string_view bytes);

/// A folder for what a target has to hand over by name; one for the process, removed at its end.
const std::string& WorkFolder();

/// Hands out an input piece by piece; zeros and empty texts once it is used up.
class Feed
{
public:
    explicit Feed(std::string_view bytes) : myBytes(bytes) {}

    bool IsOver() const { return myBytes.empty(); }
    unsigned Byte()
    {
        if (myBytes.empty()) {
            return 0;
        }
        const auto byte = static_cast<unsigned char>(myBytes.front());
        myBytes.remove_prefix(1);
        return byte;
    }
    /// 0 .. limit - 1, from one byte.
    unsigned Below(unsigned limit) { return Byte() % limit; }
    std::string_view Bytes(std::size_t count)
    {
        const std::string_view bytes = myBytes.substr(0, count);
        myBytes.remove_prefix(bytes.size());
        return bytes;
    }
    std::string_view Rest() { return Bytes(myBytes.size()); }

private:
    std::string_view myBytes;
};

} // namespace Zemtar::Fuzz
