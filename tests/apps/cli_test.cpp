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

TEST(Cli, WrongUsageIsToldAndExitsWithTwo)
{
    const QStringList wrong[] = {{},
                                 {"fly"},
                                 {"import"},
                                 {"import", "a.step", "b.step"},
                                 {"import", "a.xyz"},
                                 {"import", "a.step", "--format", "xyz"},
                                 {"import", "a.step", "--tessellation", "19"},
                                 {"import", "a.step", "--tessellation", "fine"},
                                 {"import", "a.step", "--wings"},
                                 {"convert", "a.step"},
                                 {"convert", "a.step", "b.xyz"},
                                 {"convert", "a.step", "b.step", "--unit", "parsec"},
                                 {"convert", "a.step", "b.jt", "--jt-split", "7"},
                                 {"formats", "please"}};
    for (const QStringList& arguments : wrong) {
        const Program run(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_EQ(run.err.rfind("zemtar-cad: ", 0), 0u) << run.err;
        EXPECT_TRUE(run.out.isEmpty());
    }
    EXPECT_EQ(Program({"help"}).exitCode, 0);
    EXPECT_EQ(Program({"formats"}).out.count('\n'), 11);
}

TEST(Cli, FailuresAreOneLineAndExitWithOne)
{
    const QTemporaryDir folder;
    const QString target = folder.filePath("out.step");
    QFile existing(target);
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly) && existing.write("mine") == 4);
    existing.close();

    const QString missing = folder.filePath("größe 零件.step");
    const std::string message = "Failed to read the file " + missing.toStdString() + "\n";
    for (const QStringList& arguments :
         {QStringList{"import", missing}, {"import", missing, "--json"}, {"convert", missing, target}}) {
        const Program run(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, message);
        EXPECT_TRUE(run.out.isEmpty());
    }
    EXPECT_EQ(Program({"convert", Example, folder.filePath("a.jt")}).err,
              "Failed to transfer model data to specified format\n");
    EXPECT_EQ(Program({"convert", Example, folder.filePath("a.sldprt")}).err, "Writer is NULL!\n");
    const QString nowhere = folder.filePath("no/such/a.step");
    EXPECT_EQ(Program({"convert", Example, nowhere}).err,
              "Failed to write the file " + nowhere.toStdString() + "\n");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"out.step"});
    ASSERT_TRUE(existing.open(QIODevice::ReadOnly));
    EXPECT_EQ(existing.readAll(), "mine");
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
         {"normal-map @in.png @out.png --strength 2 --invert", "tileable-normal-map @in.png @out",
          "height-map @in.png @out.png --contrast 50", "crop @in.png @out.png -- -5 0 40 20",
          "resize @in.png @out.png 40 20 --canvas #ff8000", "flip @in.png @out.png --vertical",
          "to-exr @in.png @sky --zip", "tone-map @sky.exr @out", "panorama @in.png",
          "filter bloom @in.png @out.png --amount -20", "frame @in.png @in.png @out.png",
          "combine @in.png @in.png @out.png --mode add --scale",
          "mark @in.png @in.png @out.png --at center"}) {
        QFile::remove(folder.filePath("out.png"));
        EXPECT_EQ(0, run(words).exitCode) << words;
        if (QString(words).contains("@out")) {
            EXPECT_EQ(picture.size(), QImage(folder.filePath("out.png")).size()) << words;
        }
    }
    for (const char* words : {"flip @missing.png @o.png", "resize @in.png @o.png 99999999 99999999 --stretch",
                              "tone-map @in.png @o.png"}) {
        const Program program = run(words);
        EXPECT_EQ(1, program.exitCode) << words;
        EXPECT_EQ(1, std::count(program.err.begin(), program.err.end(), '\n')) << program.err;
    }
    for (const char* words : {"", "crop a b", "filter blur a b", "flip a b --sideways"}) {
        EXPECT_EQ(2, run(words).exitCode) << words;
    }
}
