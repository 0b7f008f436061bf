#include "common/encoding/CZemtarEncoding.h"
#include "tests/support/TestFolder.h"

#include <QTextCodec>
#include <QTextStream>
#include <gtest/gtest.h>
#include <uchardet.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

namespace Zemtar {
namespace {

/// Sources lie in one folder, the temporary folder is another.
struct Encoding : testing::Test, TestFolder
{
    Encoding() { qputenv("TMPDIR", copies.root.path().toUtf8()); }

    QString source(const QByteArray& bytes) const { return write("p.stp", bytes); }
    static QString encode(const QString& file, const char* encoding, bool overwrite = false,
                          bool ascii = false)
    {
        return toQt(CZemtarEncoding::EncodeFileToUtf8(toHost(file), encoding, overwrite, ascii));
    }
    static QByteArray detect(const QString& file)
    {
        char* const name = const_cast<char*>(CZemtarEncoding::DetectFileEncoding(toHost(file)));
        return std::unique_ptr<char, decltype(&std::free)>(name, &std::free) ? QByteArray(name) : "(null)";
    }

    const TestFolder copies;
    const QString copy = copies.root.filePath("p.stp");
};

TEST_F(Encoding, HostTextsKeepEveryCharacter)
{
    const std::pair<QString, int> cases[] = {
        {"", 0},
        {"Größe 设计", 8},
        {"\U0001F600\U0010FFFF", 2},
        {QChar(0xFEFF) + QString("x"), 2},
        {QChar(0xDE00) + QString(QChar(0xD83D)), 2}, // lone surrogates
    };
    for (const auto& [text, length] : cases) {
        EXPECT_EQ(toHost(text).Length(), length);
        EXPECT_EQ(toQt(toHost(text)), text);
    }
    EXPECT_EQ(toHost(QString("ab") + QChar(0) + "c"), CZemtarString("ab"));
    EXPECT_EQ(toQt(L"\x110000"), QChar(0xFFFD));
}

TEST_F(Encoding, DetectsAsTheDetectorGivenAllBytes)
{
    constexpr int block = 0x10000;
    const QByteArray plain = QByteArray("#1=POINT('',(1.,2.));\n").repeated(12000);
    const std::pair<int, QByteArray> cases[] = {
        {0, ""},
        {0, "\xEF\xBB\xBF"},
        {block, "\xEF\xBB\xBF"},
        {block + 9, "Gr\xF6\xDF"
                    "e der Gesch\xE4"
                    "ftsf\xFChrung"},
        {3 * block - 1, "\xE8\xAE\xBE\xE8\xAE\xA1"},
        {block - 1, "~"},
        {block - 2, "~{<:Ky2;R*~}"},
        {2 * block - 1, "~{<:Ky2;R*WvHK~}"},
        {2 * block, "{<:Ky2;R*~}"},
        {2 * block - 2, "\x1B$B4A;z\x1B(B"},
        {2 * block, QByteArray("\x1B$)C\x0E\x30\x21\x0F")},
        {block + 1, "a\xA0"
                    "b"},
        {plain.size() - 1, "\xA0"},
    };
    for (const auto& [at, bytes] : cases) {
        const QByteArray text = QByteArray(plain).replace(at, bytes.size(), bytes);
        const uchardet_t detector = uchardet_new();
        for (int i = 0; i < text.size(); i += block) {
            uchardet_handle_data(detector, text.data() + i, std::min<std::size_t>(block, text.size() - i));
        }
        uchardet_data_end(detector);
        EXPECT_EQ(detect(source(text)), uchardet_get_charset(detector)) << at << " " << bytes.toHex().data();
        uchardet_delete(detector);
    }
}

TEST(Convert, TruncatesColorsWithoutClamping)
{
    const QColor color = CZemtarConvert::CZemtarColorToQColor(CZemtarColor(1.0, 0.5, 0.999, -0.003));
    EXPECT_EQ(color, QColor(255, 127, 254, 0));
    EXPECT_EQ(CZemtarConvert::QColorToCZemtarColor(color).G(), 127 / 255.0);
    for (const double channel : {1.01, -0.01, 1e300, -1e300, std::nan("")}) {
        EXPECT_FALSE(CZemtarConvert::CZemtarColorToQColor(CZemtarColor(0, 0, 0, channel)).isValid())
            << channel;
    }
}

TEST_F(Encoding, DecodesWithTheCodecOfEachName)
{
    const std::tuple<const char*, QByteArray, bool, QByteArray> cases[] = {
        {"UHC", "\xB0\xA1\x81\x41", false, "가갂"}, // the second is in the Windows code page alone
        {"EUC-TW", "\xC4\xE3\x94\x39\xFC\x36", false, "你😀"},
        {"GB18030", "\xC4\xE3\x94\x39\xFC\x36.\x7F", true, "___.\x7F"},
        {"ISO-8859-1", "\x80 Gr\xF6\xDF.", false, "€ Größ."},
        {"no such name", "plain", false, "plain"},
        {"UHC", "a\r\nb\rcut\xB0", false, "a\nbcut"},
        {"utf-8", "\xC3\xA9", false, "é"}, // only "UTF-8" itself needs no conversion
        {"UHC", "", true, ""},
        {"UHC", "." + QByteArray("\xB0\xA1").repeated(99999), false, "." + QByteArray("가").repeated(99999)},
    };
    for (const auto& [encoding, bytes, ascii, expected] : cases) {
        EXPECT_EQ(encode(source(bytes), encoding, false, ascii), copy);
        EXPECT_EQ(read(copy), expected) << encoding;
        EXPECT_EQ(read(path("p.stp")), bytes);
    }
    EXPECT_EQ(encode(source("\xB0\xA1"), "UHC", true), path("p.stp"));
    EXPECT_EQ(read(path("p.stp")), "가");
    // A source in the temporary folder is source and copy in one.
    ASSERT_TRUE(QFile::remove(copy) && QFile::copy(source("\xB0\xA2"), copy));
    EXPECT_EQ(encode(copy, "UHC"), copy);
    EXPECT_EQ(read(copy), "각");
}

TEST_F(Encoding, BlocksGiveWhatOneCallGives)
{
    constexpr int kBlock = 0x10000;
    std::minstd_rand random(18);
    const QByteArray text = QString("Größe 设计 €😀 '#1' ").repeated(6000).toUtf8();
    QList<QByteArray> damaged = {QByteArray(kBlock - 1, 'a') + "\xE8'x",
                                 QByteArray(kBlock - 2, 'a') + "\xE8\xAE'x", QByteArray(3 * kBlock, '\xE8')};
    for (int i = 0; i < 8; ++i) {
        damaged += text;
        for (int j = 0; j < 40; ++j) { // near the ends of the blocks, too
            const int at =
                (j % 2 == 0 ? kBlock - 4 : 0) + static_cast<int>(random() % (j % 2 == 0 ? 8 : text.size()));
            damaged.back()[at] = static_cast<char>(random());
        }
    }
    for (const char* name : {"utf-8", "UTF-16LE", "GB18030", "EUC-KR", "Shift_JIS", "Big5", "ISO-2022-JP"}) {
        for (const QByteArray& bytes : damaged) {
            QByteArray read = bytes;
            read.replace('\r', ""); // text mode
            QTextCodec::ConverterState state;
            const QString expected =
                QTextCodec::codecForName(name)->toUnicode(read, static_cast<int>(read.size()), &state);
            ASSERT_EQ(encode(source(bytes), name), copy);
            QByteArray written;
            QTextStream stream(&written);
            stream.setEncoding(QStringConverter::Utf8);
            stream << expected << Qt::flush;
            ASSERT_TRUE(TestFolder::read(copy) == written) << name;
        }
    }
}

TEST_F(Encoding, OverwritesInAFolderThatTakesNoNewFile)
{
    const QString file = source("\xB0\xA1\n");
    const QFile::Permissions all(0x7777), noWriting(0x5555);
    QFile::setPermissions(file, all);
    QFile::setPermissions(root.path(), all);
    QFile::setPermissions(path(""), noWriting);
    const uid_t user = geteuid();
    if (user == 0) { // for whom no folder is closed
        ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(encode(file, "UHC", true), file);
    ASSERT_EQ(seteuid(user), 0);
    QFile::setPermissions(path(""), all);
    EXPECT_EQ(read(file), "가\n");
    EXPECT_EQ(QDir(path("")).entryList(QDir::Files | QDir::Hidden), QStringList("p.stp"));
}

TEST_F(Encoding, FailureLeavesWhatWasThere)
{
    const QByteArray bytes = QByteArray("\xB0\xA1").repeated(100000);
    const QString file = source(bytes);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{50000, before.rlim_max}; // as a full disk
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(encode(file, "UHC", true), file);
    EXPECT_EQ(encode(file, "UHC", false), file);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(QDir(copies.root.path()).isEmpty(QDir::Files | QDir::Hidden));

    for (const QString& unreadable : {path(""), path("none")}) {
        EXPECT_EQ(encode(unreadable, "UHC"), unreadable);
        EXPECT_EQ(detect(unreadable), "(null)");
    }
    QDir().mkpath(copy); // a folder where the copy belongs
    EXPECT_EQ(encode(file, "UHC"), file);
    EXPECT_EQ(read(file), bytes);
}

TEST_F(Encoding, GbkOnlyWhenAllOfItIs)
{
    for (const char* invalid : {"\xC4\xE3 \xFF", "\xC4\xE3\x81\x20"}) {
        EXPECT_EQ(toQt(CZemtarEncoding::EncodeFromGbkToUtf8(toHost(source(invalid)))), path("p.stp"));
        EXPECT_FALSE(QFile::exists(copy));
    }
    EXPECT_EQ(toQt(CZemtarEncoding::EncodeFromGbkToUtf8(toHost(source("\xC4\xE3\xBA\xC3\r\n")))), copy);
    EXPECT_EQ(read(copy), "你好\n");
}

TEST_F(Encoding, DetectsNames)
{
    const QByteArray korean("\xBC\xB3\xB0\xE8 \xB5\xB5\xB8\xE9\xC0\xBB \xBA\xC0\xB4\xCF\xB4\xD9.\n");
    EXPECT_EQ(detect(source(QByteArray("ISO-10303-21;\n").repeated(9999) + korean)),
              "UHC"); // in a later block
    EXPECT_EQ(detect(source("ISO-10303-21;")), "ASCII");
    EXPECT_EQ(detect(source("Größe 设计")), "UTF-8");
    EXPECT_EQ(detect(source("")), "");
}

} // namespace
} // namespace Zemtar
