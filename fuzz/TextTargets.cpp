// Clear text of ISO 10303-21, and the encodings of text files.
#include "fuzz/Target.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

#include "common/encoding/CZemtarConvert.h"
#include "common/encoding/CZemtarEncoding.h"
#include "sdk/part21/ClearText.h"
#include "sdk/part21/Strings.h"

#include <QByteArray>
#include <QString>

namespace Zemtar::Fuzz {
namespace {

using cadex::part21::ClearText;
using cadex::part21::Cursor;
using cadex::part21::RecordId;

/// Reads all arguments by what each is; returns how many there are.
std::size_t ReadAll(Cursor& cursor, int depth)
{
    std::size_t count = 0;
    for (; cursor.More() && !cursor.Failed(); ++count) {
        switch (cursor.Next()) {
        case Cursor::Kind::Reference:
            cursor.Reference();
            break;
        case Cursor::Kind::Integer:
            cursor.Integer();
            break;
        case Cursor::Kind::Real:
            cursor.Real();
            break;
        case Cursor::Kind::String:
            cadex::part21::DecodeString(cursor.String());
            break;
        case Cursor::Kind::Enumerator:
            cursor.Enumerator();
            break;
        case Cursor::Kind::List:
            if (depth < 20 && cursor.EnterList()) {
                ReadAll(cursor, depth + 1);
                cursor.Leave();
            } else {
                cursor.Skip();
            }
            break;
        case Cursor::Kind::Typed:
            if (depth < 20 && !cursor.EnterTyped().empty()) {
                ReadAll(cursor, depth + 1);
                cursor.Leave();
            } else {
                cursor.Skip();
            }
            break;
        default:
            cursor.Raw();
        }
    }
    return count;
}

/// Each record by each way of asking.
void RunPart21(const Target&, std::string_view bytes)
{
    ClearText text;
    if (!text.Load(std::string(bytes))) {
        return;
    }
    std::size_t found = 0;
    std::vector<RecordId> references;
    for (const ClearText::Record& record : text.Records()) {
        Cursor arguments = text.Arguments(record);
        ReadAll(arguments, 0);
        Cursor again = text.Arguments(record);
        std::vector<double> numbers;
        again.AppendReals(numbers);
        again.References();
        references.clear();
        text.AppendReferences(record, references);
        const ClearText::Record* same = text.Find(record.id);
        Require(same == nullptr || same->id == record.id, "a record is found by its number");
        found += same == &record ? 1U : 0U;
        bool isThere = false;
        text.Arguments(record.id, "PRODUCT", isThere);
    }
    Require(found <= text.Count(), "no record is found twice");
    for (const std::uint32_t place : text.FileOrder()) {
        Require(place < text.Count(), "the order of the file is one of its records");
    }
    for (const char* name : {"FILE_NAME", "FILE_DESCRIPTION", "FILE_SCHEMA"}) {
        Cursor header = text.Header(name);
        ReadAll(header, 0);
    }
    text.ForEachByNumber([](const ClearText::Record&) {});
}

std::vector<std::string> Part21Seeds(const Target&)
{
    const std::string start =
        "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('a','',(''),(''),'','','');\n"
        "FILE_SCHEMA(('X'));\nENDSEC;\nDATA;\n";
    const std::string end = "ENDSEC;\nEND-ISO-10303-21;\n";
    return {start + "#1=PRODUCT('a\\X2\\96F6\\X0\\','it''s \\S\\d \\X\\E9 \\P.\\',$,(#2,#3),*);\n" + end,
            start +
                "#1=(A(1.,2.E-3)B()C('x',.T.));\n/* c */ #2 = LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(-1.5),"
                "#1);\n#3=D(((1,2),(3,4)),\"0F\",\\);\n" +
                end,
            start + "#7=E('\xE9\x9B\xB6');\n#7=E('\xE9\x9B\xB6');\n#8=F(#7,());\n" + end +
                "DATA;\n#9=G();\n" + end};
}

/// The first bytes choose what is asked of the file, the rest is its text.
void RunEncoding(const Target&, std::string_view bytes)
{
    namespace fs = std::filesystem;
    static const char* const Names[] = {"UTF-8",    "ASCII",   "UHC",       "ISO-8859-1",  "GB18030",
                                        "BIG5",     "EUC-JP",  "SHIFT_JIS", "EUC-KR",      "UTF-16LE",
                                        "UTF-32BE", "nothing", "KOI8-R",    "WINDOWS-1252"};
    Feed feed(bytes);
    const unsigned choice = feed.Byte();
    const unsigned encoding = feed.Byte();
    const std::string text(feed.Rest());
    const std::string folder = WorkFolder() + "/text";
    fs::create_directories(folder);
    const std::string file = folder + "/input.txt";
    WriteBytes(file, text);

    const std::unique_ptr<const char, void (*)(const char*)> detected(
        CZemtarEncoding::DetectFileEncoding(file.c_str()),
        [](const char* name) { std::free(const_cast<char*>(name)); });
    Require(detected != nullptr, "a file that is there is looked at");
    const bool overwrites = (choice & 1U) != 0;
    const CZemtarString name = (choice & 2U) != 0 ? CZemtarString(Names[encoding % std::size(Names)])
                                                  : CZemtarString(detected.get());
    const CZemtarString result =
        (choice & 4U) != 0
            ? CZemtarEncoding::EncodeFromGbkToUtf8(file.c_str())
            : CZemtarEncoding::EncodeFileToUtf8(file.c_str(), name, overwrites, (choice & 8U) != 0);
    const std::string path = result.toStdString();
    Require(fs::exists(path), "what is handed back is there");
    if (path != file) {
        const std::string copy = BytesOf(path);
        Require(QString::fromUtf8(copy.data(), static_cast<qsizetype>(copy.size())).toUtf8() ==
                    QByteArray(copy.data(), static_cast<qsizetype>(copy.size())),
                "a copy is UTF-8");
        Require(BytesOf(file) == text, "the source of a copy stays");
        fs::remove(path);
    }
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder)) {
        ++files;
    }
    Require(files == 1, "nothing else is left in the folder");
    QString letters = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    CZemtarEncoding::ConvertUnicodeToASCII(letters);
    for (const QChar letter : letters) {
        Require(letter.unicode() < 128, "what was made ASCII is ASCII");
    }
}

std::vector<std::string> EncodingSeeds(const Target&)
{
    std::vector<std::string> seeds;
    for (const char* text :
         {"plain text 123\r\n", "Größe, Ångström, naïve façade\n",
          "\xE9\x9B\xB6\xE4\xBB\xB6 \xF0\x9F\x98\x80\n", "\xC1\xE3\xBC\xFE\xB2\xE2\xCA\xD4\n", "\xFF\xFEz",
          "\x81\x30\x81\x30 \x8E\xA1 \xA4\xCE\n"}) {
        for (const char* choice : {"\x01\x01", "\x02\x04", "\x04\x01", "\x0A\x02"}) {
            seeds.push_back(std::string(choice) + text);
        }
    }
    // a character that lies across the border of two blocks
    seeds.push_back("\x02\x04" + std::string((1 << 16) - 7, 'a') + "\xB0\xA1\xB0\xA1\xB0\xA1");
    return seeds;
}

} // namespace

std::vector<Target> TextTargets()
{
    return {{"part21", RunPart21, Part21Seeds}, {"encoding", RunEncoding, EncodingSeeds}};
}

} // namespace Zemtar::Fuzz
