#include "sdk/acis/AcisTwins.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>

namespace cadex::acis {

namespace {

/// Of two words, so that different bodies do not come out equal by chance.
class Digest
{
public:
    using Value = std::array<std::uint64_t, 2>;

    void Add(std::uint64_t word)
    {
        myValue[0] = (myValue[0] ^ word) * 0x9E3779B97F4A7C15U;
        myValue[0] ^= myValue[0] >> 29;
        myValue[1] = (myValue[1] + word) * 0xC2B2AE3D27D4EB4FU;
        myValue[1] ^= myValue[1] >> 31;
    }
    void Add(std::string_view text)
    {
        Add(text.size());
        while (!text.empty()) {
            std::uint64_t word = 0;
            for (const char c : text.substr(0, sizeof(word))) {
                word = word << 8 | static_cast<unsigned char>(c);
            }
            Add(word);
            text.remove_prefix(std::min(text.size(), sizeof(word)));
        }
    }
    const Value& Get() const { return myValue; }

private:
    Value myValue{0x243F6A8885A308D3U, 0x13198A2E03707344U};
};

/// Follows the records of a body in the order in which they name each other; the numbers of records differ
/// between equal bodies, those of the order do not.
class BodyWalk
{
public:
    BodyWalk(const Records& records, int body, const std::function<std::uint64_t(int)>& lookOf)
        : myRecords(records), myLookOf(lookOf)
    {
        NumberOf(body);
    }

    Digest::Value Run()
    {
        Fields body = myRecords.Own(static_cast<std::size_t>(myOrder[0]));
        AddNext(body); // a lump
        AddNext(body); // a wire
        for (std::size_t i = 1; i < myOrder.size(); ++i) {
            AddRecord(static_cast<std::size_t>(myOrder[i]));
        }
        return myDigest.Get();
    }

private:
    std::uint64_t NumberOf(int record)
    {
        const auto [place, isNew] = myNumbers.try_emplace(record, myOrder.size());
        if (isNew) {
            myOrder.push_back(record);
        }
        return place->second;
    }

    void AddNext(Fields& fields)
    {
        if (fields.IsPointer()) {
            const int target = fields.Pointer();
            myDigest.Add(target == None ? ~std::uint64_t{0} : NumberOf(target));
        } else {
            myDigest.Add(fields.Next());
        }
    }

    /// Without what every entity begins with: attributes, numbers of its own, its history.
    void AddRecord(std::size_t record)
    {
        myDigest.Add(myRecords.Type(record));
        myDigest.Add(myLookOf(static_cast<int>(record)));
        Fields fields = myRecords.Own(record);
        while (!fields.AtEnd()) {
            AddNext(fields);
        }
    }

    const Records& myRecords;
    const std::function<std::uint64_t(int)>& myLookOf;
    Digest myDigest;
    std::vector<int> myOrder;
    std::unordered_map<int, std::uint64_t> myNumbers;
};

} // namespace

std::vector<std::size_t> FindTwins(const Records& records, const std::vector<int>& bodies,
                                   const std::vector<std::size_t>& sizes,
                                   const std::function<std::uint64_t(int)>& lookOf)
{
    std::map<std::size_t, std::size_t> ofSize;
    for (const std::size_t size : sizes) {
        ++ofSize[size];
    }
    std::vector<std::size_t> first(bodies.size());
    std::map<std::pair<std::size_t, Digest::Value>, std::size_t> known;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        first[i] = i;
        if (bodies[i] != None && ofSize[sizes[i]] > 1) {
            first[i] =
                known.try_emplace({sizes[i], BodyWalk(records, bodies[i], lookOf).Run()}, i).first->second;
        }
    }
    return first;
}

} // namespace cadex::acis
