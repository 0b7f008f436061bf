// zemtar-cad as its users run it: exit codes, standard error, JSON, and conversion there and back.

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

namespace {

const QString Example = QStringLiteral(ZEMTAR_SOURCE_DIR "/examples/pump.step");

struct Program
{
    int exitCode;
    QString out;
    std::string err;

    explicit Program(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral(ZEMTAR_BINARY_DIR "/bin/zemtar-cad"), arguments);
        process.waitForFinished(300000);
        exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        out = QString::fromUtf8(process.readAllStandardOutput());
        err = process.readAllStandardError().toStdString();
    }
    QJsonObject Json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
};

/// Visits a node and all below it.
template <class Visit>
void ForEachNode(const QJsonArray& nodes, const Visit& visit)
{
    for (const QJsonValue node : nodes) {
        visit(node.toObject());
        ForEachNode(node["children"].toArray(), visit);
    }
}

QStringList Collect(const QJsonObject& import, const QString& what)
{
    QStringList found;
    ForEachNode(import["roots"].toArray(), [&](const QJsonObject& node) {
        if (what == "name" && node["type"] != "group") { // groups are transparent to the export
            found << node["name"].toString();
        } else if (what == "metadata" && !node["metadata"].toObject().isEmpty()) {
            found << QString::fromUtf8(QJsonDocument(node["metadata"].toObject()).toJson());
        } else if (what == "colour" && node.contains("material")) {
            found << node["material"]["name"].toString().section(',', 0, 2);
        }
    });
    found.sort();
    found.removeDuplicates();
    return found;
}

double Size(const QJsonObject& import)
{
    double sum = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        sum += std::abs(import["bounds"]["max"][axis].toDouble() - import["bounds"]["min"][axis].toDouble());
    }
    return sum;
}

} // namespace

TEST(Cli, WrongUsageIsToldInTwoLinesAndExitsWithTwo)
{
    const std::pair<QStringList, const char*> wrong[] = {
        {{}, "subcommand"},
        {{"improt", "a.step"}, "did you mean import?"},
        {{"import"}, "FILE"},
        {{"import", "a.xyz"}, "--format"},
        {{"import", "a.step", "--format", "xyz"}, "Parasolid"},
        {{"import", "a.step", "--tessellation", "19"}, "19"},
        {{"import", "a.step", "--tessellation", "fine"}, "fine"},
        {{"import", "a.step", "--tesselation", "30"}, "did you mean --tessellation?"},
        {{"convert", "a.step"}, "--output-folder"},
        {{"convert", "a.step", "b.xyz"}, "b.xyz"},
        {{"convert", "a.step", "b.igs", "-o", "out"}, "--to"},
        {{"convert", "a.step", "x/a.igs", "-o", "out", "--to", "ifc"}, "out/a.ifc"},
        {{"convert", "a.step", "b.step", "--unit", "parsec"}, "parsec"},
        {{"convert", "a.step", "b.jt", "--jt-split", "7"}, "7"},
        {{"formats", "please"}, "please"},
        {{"image"}, "subcommand"},
        {{"image", "crop", "a"}, "OUT"},
        {{"image", "blurr", "a", "b"}, "blurr"},
        {{"image", "flip", "a", "b", "--sideways"}, "--sideways"},
        {{"image", "warm", "a", "b", "--amount", "1.5"}, "1.5"}};
    for (const auto& [arguments, expected] : wrong) {
        const Program run(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_EQ(run.err.rfind("zemtar-cad: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(expected), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 2) << run.err;
        EXPECT_TRUE(run.out.isEmpty());
    }
    for (const QStringList& arguments :
         {QStringList{"help"}, {"help", "convert"}, {"image", "crop", "--help"}, {"--version"}}) {
        const Program run(arguments);
        EXPECT_EQ(run.exitCode, 0) << arguments.join(' ').toStdString();
        EXPECT_FALSE(run.out.isEmpty());
    }
    EXPECT_EQ(Program({"formats"}).out.count('\n'), 16);
    EXPECT_EQ(QJsonDocument::fromJson(Program({"formats", "--json"}).out.toUtf8()).array().size(), 14);
}

TEST(Cli, AFailureIsTheLibrarysLineAndTheReason)
{
    const QTemporaryDir folder;
    const auto write = [&folder](const char* name, const QByteArray& content) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    };
    QDir(folder.path()).mkdir("folder.step");
    const QByteArray step = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n";
    const std::pair<QString, const char*> cases[] = {
        {folder.filePath("größe 零件.step"), "there is no such file"},
        {folder.filePath("folder.step"), "it is a folder"},
        {write("empty.step", {}), "it is empty"},
        {write("zip.step", "PK\x03\x04 and more"), "its content is a ZIP archive, not STEP"},
        {write("wrong.igs", step), "its content is STEP, not IGES; --format STEP reads it so"},
        {write("old.ifc", "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC2X2_FINAL'));"), "IFC2X2_FINAL"}};
    for (const auto& [file, reason] : cases) {
        const Program run({"import", file});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err.rfind("Failed to ", 0), 0u) << run.err;
        const std::size_t second = run.err.find('\n') + 1;
        EXPECT_EQ(run.err.find("zemtar-cad: " + file.toStdString() + ": "), second) << run.err;
        EXPECT_NE(run.err.find(reason, second), std::string::npos) << run.err;
        EXPECT_TRUE(run.out.isEmpty());
    }
    const Program json({"import", cases[0].first, Example, "--json", "--quiet"});
    EXPECT_EQ(json.exitCode, 1);
    const QJsonArray files = QJsonDocument::fromJson(json.out.toUtf8()).array();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0]["error"].toString(), "there is no such file");
    EXPECT_TRUE(files[1]["reports"].isArray() && files[1]["roots"].isArray());
}

TEST(Cli, AConversionThatCannotBeWrittenIsNotBegun)
{
    const QTemporaryDir folder;
    const auto content = [](const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QString copy = folder.filePath("copy.step");
    const QString mine = folder.filePath("mine.igs");
    ASSERT_TRUE(QFile::copy(Example, copy) && QFile::copy(Example, mine) &&
                QFile::link(copy, folder.filePath("link.step")));
    const QByteArray before = content(copy);
    const std::pair<QStringList, const char*> cases[] = {
        {{copy, copy, "--force"}, "it is the file that would be read"},
        {{copy, folder.filePath("link.step"), "--force"}, "it is the file that would be read"},
        {{copy, mine}, "--force"},
        {{copy, folder.filePath("a.sldprt")}, "no engine that writes SolidWorks"},
        {{copy, folder.filePath("no/such/a.step")}, "there is no folder"}};
    for (const auto& [arguments, reason] : cases) {
        const Program run(QStringList{"convert"} + arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
    EXPECT_EQ(content(copy), before);
    EXPECT_EQ(content(mine), before);
    EXPECT_EQ(Program({"convert", copy, mine, "--force"}).exitCode, 0);
    EXPECT_NE(content(mine), before);
}

TEST(Cli, ManyFilesGoIntoAFolder)
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath("missing.step");
    const Program run({"convert", Example, missing, QStringLiteral(ZEMTAR_SOURCE_DIR "/examples/bracket.igs"),
                       "-o", folder.filePath("out"), "--to", "ifc"});
    EXPECT_EQ(run.exitCode, 1) << "one is missing";
    EXPECT_EQ(QDir(folder.filePath("out")).entryList(QDir::Files), (QStringList{"bracket.ifc", "pump.ifc"}));
}

TEST(Cli, AnInterruptCancelsInPeace)
{
    const QTemporaryDir folder;
    QStringList arguments{"import", "--textures", folder.filePath("textures")};
    for (int i = 0; i < 200; ++i) {
        arguments << Example;
    }
    QProcess process;
    process.start(QStringLiteral(ZEMTAR_BINARY_DIR "/bin/zemtar-cad"), arguments);
    ASSERT_TRUE(process.waitForReadyRead(300000)) << "the first file's tree";
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(300000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    const QByteArray errors = process.readAllStandardError();
    EXPECT_TRUE(errors.contains("cancelled")) << errors.toStdString();
    EXPECT_FALSE(errors.contains('%')) << "a line of progress where no terminal is";
    EXPECT_LT(process.readAllStandardOutput().count(Example.toUtf8()), 200);
}

TEST(Cli, ControlCharactersOfAFileReachNoTerminal)
{
    const QTemporaryDir folder;
    QFile example(Example);
    ASSERT_TRUE(example.open(QIODevice::ReadOnly));
    QByteArray text = example.readAll();
    const qsizetype product = text.indexOf("PRODUCT('");
    ASSERT_GE(product, 0);
    // An escape sequence and a C1 control in the names, as clear text writes them.
    text.replace("PRODUCT('", "PRODUCT('\\X\\1B[2J\\X2\\009B\\X0\\");
    QFile file(folder.filePath("names.step"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    file.close();
    for (const QStringList& arguments :
         {QStringList{"import", file.fileName()}, {"import", file.fileName(), "--json"}}) {
        const Program run(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_TRUE(run.out.contains("[2J"));
        EXPECT_FALSE(run.out.contains(QChar(0x1b)) || run.out.contains(QChar(0x9b)));
    }
    EXPECT_FALSE(QString::fromStdString(Program({"import", "no\x1b[2J.step"}).err).contains(QChar(0x1b)));
}

TEST(Cli, ConversionKeepsWhatTheFormatCarries)
{
    const QTemporaryDir folder;
    const QJsonObject original = Program({"import", Example, "--json"}).Json();
    ASSERT_GT(original["totals"]["triangles"].toInt(), 0);
    for (const auto& [name, unit] : {std::pair{"copy.step", "in"}, std::pair{"kopie größe.igs", "cm"}}) {
        const QString copy = folder.filePath(name);
        ASSERT_EQ(Program({"convert", Example, copy, "--unit", unit}).exitCode, 0) << name;
        const QJsonObject again = Program({"import", copy, "--json"}).Json();
        EXPECT_EQ(again["totals"]["triangles"], original["totals"]["triangles"]) << name;
        EXPECT_EQ(Collect(again, "colour"), Collect(original, "colour")) << name;
        EXPECT_NEAR(Size(again), Size(original), 1e-6 * Size(original)) << name;
        if (copy.endsWith("step")) {
            const QStringList names = Collect(again, "name");
            for (const QString& each : Collect(original, "name")) {
                EXPECT_TRUE(each.isEmpty() || names.contains(each)) << each.toStdString();
            }
        }
    }
}

TEST(Cli, ImageCommandsMakePictures)
{
    const QTemporaryDir folder;
    const auto run = [&folder](const QString& words) {
        return Program(QString("image " + words).replace('@', folder.path() + '/').split(' '));
    };
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(QColor(200, 100, 50));
    ASSERT_TRUE(picture.save(folder.filePath("in.png")));
    for (const char* words :
         {"normal-map @in.png @out.png --strength 2 --invert", "tileable-normal-map @in.png @out.png",
          "height-map @in.png @out.png --contrast 50", "crop @in.png @out.png --left -5 --width 40",
          "canvas @in.png @out.png --width 40 --height 20 --red 12",
          "flip @in.png @out.png --direction top-and-bottom", "convert @in.png @sky.exr",
          "tone-mapping @sky.exr @out.png", "panorama @in.png", "convert @in.png @out.png --panorama",
          "bloom @in.png @out.png --brightness 20", "frame @in.png @in.png @out.png",
          "combine @in.png @in.png @out.png --mode add --scale",
          "mark @in.png @in.png @out.png --place center"}) {
        QFile::remove(folder.filePath("out.png"));
        const Program program = run(words);
        EXPECT_EQ(0, program.exitCode) << words << program.err;
        if (QString(words).contains("@out")) {
            EXPECT_EQ(picture.size(), QImage(folder.filePath("out.png")).size()) << words;
        }
    }
    for (const char* words : {"flip @missing.png @o.png", "flip @in.png @o.xyz", "flip @in.png @no/o.png",
                              "scale @in.png @o.png --width 16384 --height 16384 --no-keep-proportions"}) {
        const Program program = run(words);
        EXPECT_EQ(1, program.exitCode) << words;
        EXPECT_EQ(1, std::count(program.err.begin(), program.err.end(), '\n')) << program.err;
    }
}

TEST(Cli, PicturesAreWholeAndKeepTheirDepth)
{
    const QTemporaryDir folder;
    QImage deep(40, 20, QImage::Format_RGBA64);
    for (int y = 0; y < deep.height(); ++y) {
        for (int x = 0; x < deep.width(); ++x) {
            deep.setPixelColor(x, y, QColor::fromRgba64(quint16(x * 1601), quint16(y * 3203), 12345, 65535));
        }
    }
    const QString in = folder.filePath("deep.png");
    const QString out = folder.filePath("out.png");
    ASSERT_TRUE(deep.save(in));
    EXPECT_EQ(Program({"image", "flip", in, out}).exitCode, 0);
    EXPECT_EQ(QImage(out).convertToFormat(QImage::Format_RGBA64), deep.mirrored(true, false));
    EXPECT_EQ(Program({"image", "crop", in, out, "--left", "3", "--width", "9", "--height", "20"}).exitCode,
              0);
    EXPECT_EQ(QImage(out).convertToFormat(QImage::Format_RGBA64), deep.copy(3, 0, 9, 20));
    EXPECT_EQ(Program({"image", "scale", in, out, "--width", "20"}).exitCode, 0);
    EXPECT_GT(QImage(out).depth(), 32);
    const Program warm({"image", "warm", in, out});
    EXPECT_NE(warm.err.find("8 bits"), std::string::npos) << warm.err;

    // Where no file takes a byte, as on a full disk, the picture that was there stays.
    ASSERT_TRUE(deep.save(out));
    QProcess limited;
    limited.start("sh", {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" \"$@\"",
                         QStringLiteral(ZEMTAR_BINARY_DIR "/bin/zemtar-cad"), "image", "warm", in, out});
    ASSERT_TRUE(limited.waitForFinished(300000));
    EXPECT_EQ(limited.exitCode(), 1);
    EXPECT_EQ(QImage(out).convertToFormat(QImage::Format_RGBA64), deep);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 2) << "nothing is left beside it";
}
