// The binary form of text files of ACIS.
#pragma once

#include <cstdint>
#include <cstring>
#include <set>
#include <sstream>
#include <string>

namespace acistest {

/// Of a text from version 7 on. Numbers with a point are reals, others whole numbers; the coordinates of a
/// point are one value; words that are directions become truth values, the names of splines names, others
/// choices.
class BinaryText
{
public:
    BinaryText(const std::string& sat, bool isWide) : myIsWide(isWide), myText(sat)
    {
        bytes = isWide ? "ASM BinaryFile8" : "ACIS BinaryFile";
        for (int i = 0; i < 4; ++i) {
            PutWhole(std::stoll(Word()));
        }
        for (int i = 0; i < 3; ++i) {
            PutText(Word());
        }
        for (int i = 0; i < 3; ++i) {
            PutReal(Word());
        }
        while (PutRecord()) {
        }
    }

    std::string bytes;

private:
    std::string Word()
    {
        std::string word;
        myText >> word;
        return word;
    }
    template <typename T>
    void Put(T value)
    {
        char raw[sizeof(T)];
        std::memcpy(raw, &value, sizeof(T));
        bytes.append(raw, sizeof(T));
    }
    void PutWhole(long long value)
    {
        if (myIsWide) {
            Put(static_cast<std::int64_t>(value));
        } else {
            Put(static_cast<std::int32_t>(value));
        }
    }
    void PutReal(const std::string& word)
    {
        bytes += '\6';
        Put(std::stod(word));
    }
    /// The word is the length of the text behind it.
    void PutText(const std::string& word)
    {
        std::string text(std::stoul(word.substr(1)), '\0');
        myText.get();
        myText.read(text.data(), static_cast<std::streamsize>(text.size()));
        bytes += '\7';
        bytes += static_cast<char>(text.size());
        bytes += text;
    }
    void PutName(const std::string& name, char tag)
    {
        bytes += tag;
        bytes += static_cast<char>(name.size());
        bytes += name;
    }
    void PutType(std::string type)
    {
        for (std::size_t dash = type.find('-'); dash != std::string::npos; dash = type.find('-')) {
            PutName(type.substr(0, dash), 14);
            type.erase(0, dash + 1);
        }
        PutName(type, 13);
    }

    bool PutRecord()
    {
        std::string word = Word();
        if (word[0] == '-') {
            word = Word(); // behind the number of the record
        }
        const std::string type = word;
        PutType(type);
        if (type.starts_with("End-of-")) {
            return false;
        }
        int pointers = 0;
        while ((word = Word()) != "#") {
            pointers += word[0] == '$' ? 1 : 0;
            const bool isNumber = word.find_first_not_of("+-.0123456789e") == std::string::npos;
            if (type == "transform" && pointers == 1 && word.size() > 1 && isNumber && word != "-1") {
                std::string rest;
                std::getline(myText, rest, '#');
                rest = word + rest;
                bytes += '\x12';
                PutWhole(static_cast<long long>(rest.size()));
                bytes += rest;
                break;
            }
            if (type == "point" && isNumber && word != "-1") {
                bytes += '\x13';
                Put(std::stod(word));
                Put(std::stod(Word()));
                Put(std::stod(Word()));
            } else {
                PutField(word, isNumber);
            }
        }
        bytes += '\x11';
        return true;
    }

    void PutField(const std::string& word, bool isNumber)
    {
        static const std::set<std::string> yes = {"reversed", "double", "F"};
        static const std::set<std::string> no = {"forward", "single", "I", "forward_v"};
        static const std::set<std::string> names = {"exactcur", "exactsur", "blendsur", "nubs",
                                                    "nurbs",    "ref",      "null",     "spline"};
        if (word == "{" || word == "}") {
            bytes += word == "{" ? '\x0f' : '\x10';
        } else if (word[0] == '@') {
            PutText(word);
        } else if (word[0] == '$') {
            bytes += '\x0c';
            PutWhole(std::stoll(word.substr(1)));
        } else if (isNumber && word.find_first_of(".e") != std::string::npos) {
            PutReal(word);
        } else if (isNumber) {
            bytes += '\4';
            PutWhole(std::stoll(word));
        } else if (yes.count(word) != 0 || no.count(word) != 0) {
            bytes += yes.count(word) != 0 ? '\x0a' : '\x0b';
        } else if (names.count(word) != 0) {
            PutName(word, 13);
        } else {
            bytes += '\x15';
            PutWhole(7);
        }
    }

    bool myIsWide;
    std::istringstream myText;
};

inline std::string Binary(const std::string& sat, bool isWide = false)
{
    return BinaryText(sat, isWide).bytes;
}

} // namespace acistest
