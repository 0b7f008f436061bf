// Damage to an input, for machines without libFuzzer.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace Zemtar::Fuzz {

/// The same seed gives the same series of inputs on every machine.
class Mutation
{
public:
    Mutation(std::vector<std::string> seeds, unsigned seed, std::size_t longest)
        : mySeeds(std::move(seeds)), myRandom(seed), myLongest(longest)
    {
    }

    /// One of the seeds, damaged in one to eight places.
    std::string Next();

private:
    std::size_t Below(std::size_t limit);
    void Damage(std::string& bytes);
    void ChangeNumber(std::string& bytes);
    void WriteInteger(std::string& bytes);

    std::vector<std::string> mySeeds;
    std::mt19937 myRandom;
    std::size_t myLongest;
};

} // namespace Zemtar::Fuzz
