#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/images/ImageFile.h"
#include "apps/images/ImageOperations.h"
#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"

#include <QFileInfo>

#include <cmath>
#include <deque>
#include <optional>

using namespace Zemtar;

namespace {

/// One command of `image`: an operation of the table, or none, between a picture file and another.
struct ImageCommand
{
    const ImageOperation* operation = nullptr;
    std::string in;
    std::string second;
    std::string out;
    std::deque<std::optional<double>> numbers; ///< one for each parameter, as far as the user gave it
    std::deque<std::string> choices;
    std::deque<bool> switches;
    bool panorama = false;

    void Declare(CLI::App& command);
    void Run(Console& console) const;

private:
    void DeclareParameter(CLI::App& command, std::size_t index);
    ImageValues Values(QSize size) const;
};

QStringList WordsOf(const char* choices)
{
    QStringList words;
    for (const QString& choice : QString::fromLatin1(choices).split('|')) {
        words << ImageOperationWord(choice.toLatin1().constData());
    }
    return words;
}

std::string CheckWhole(const std::string& word)
{
    bool isWhole = false;
    Text(word).toInt(&isWhole);
    return isWhole ? std::string() : word + " is no whole number";
}

void ImageCommand::Declare(CLI::App& command)
{
    command.add_option("IN", in, "The picture")->required();
    if (operation && operation->second) {
        command.add_option("SECOND", second, operation->second)->required();
    }
    command.add_option("OUT", out, "The file to write; its extension names the format")->required();
    command.add_flag("--panorama", panorama, "Mark the written PNG or JPEG file as a 360 degree panorama");
    const std::size_t count = operation ? operation->parameters.size() : 0;
    numbers.resize(count);
    choices.resize(count);
    switches.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        DeclareParameter(command, i);
    }
}

void ImageCommand::DeclareParameter(CLI::App& command, std::size_t index)
{
    const ImageParameter& parameter = operation->parameters[index];
    const std::string word = ImageOperationWord(parameter.name).toStdString();
    switch (parameter.kind) {
    case ImageParameter::Switch:
        command.add_flag(parameter.value != 0 ? "--no-" + word : "--" + word, switches[index],
                         parameter.help);
        return;
    case ImageParameter::Choice: {
        std::vector<std::string> words;
        for (const QString& each : WordsOf(parameter.choices)) {
            words.push_back(each.toStdString());
        }
        choices[index] = words[static_cast<std::size_t>(parameter.value)];
        command.add_option("--" + word, choices[index], parameter.help)
            ->check(CLI::IsMember(words))
            ->capture_default_str();
        return;
    }
    default:
        break;
    }
    CLI::Option* option =
        command.add_option("--" + word, numbers[index], parameter.help)->type_name("NUMBER");
    option->check(CLI::Range(parameter.least, parameter.most));
    if (parameter.kind != ImageParameter::Number) {
        option->check(CLI::Validator(CheckWhole, ""));
    }
    const bool isSide = parameter.kind == ImageParameter::Width || parameter.kind == ImageParameter::Height;
    option->default_str(isSide ? "the picture's" : QString::number(parameter.value).toStdString());
}

ImageValues ImageCommand::Values(QSize size) const
{
    ImageValues values = operation->Defaults(size);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const ImageParameter& parameter = operation->parameters[i];
        if (parameter.kind == ImageParameter::Switch) {
            values[i] = switches[i] ? 1 - values[i] : values[i];
        } else if (parameter.kind == ImageParameter::Choice) {
            values[i] = static_cast<double>(WordsOf(parameter.choices).indexOf(Text(choices[i])));
        } else {
            values[i] = numbers[i].value_or(values[i]);
        }
    }
    return values;
}

/// Reads a picture; null, with the reason on the console, when it cannot be.
ImageFile Load(const std::string& file, Console& console)
{
    ImageFile picture = ReadImageFile(Text(file));
    if (picture.image.isNull()) {
        console.Error(QStringLiteral("%1: %2").arg(Text(file), picture.failure));
    }
    return picture;
}

void ImageCommand::Run(Console& console) const
{
    const ImageFile picture = Load(in, console);
    const ImageFile other = second.empty() ? ImageFile() : Load(second, console);
    if (picture.image.isNull() || (!second.empty() && other.image.isNull())) {
        return;
    }
    ImageOutcome outcome{picture.image};
    if (operation) {
        outcome =
            operation->Run({picture.image, picture.highRange, other.image}, Values(picture.image.size()));
    }
    if (!outcome.failure.isEmpty()) {
        console.Error(QStringLiteral("%1: %2").arg(Text(in), outcome.failure));
        return;
    }
    const QString highRange = operation ? QString() : picture.highRange;
    const QString failure = panorama ? WritePanorama(outcome.image, Text(out))
                                     : WriteImageFile(outcome.image, Text(out), highRange);
    if (!failure.isEmpty()) {
        console.Error(QStringLiteral("%1: %2").arg(Text(out), failure));
        return;
    }
    if (!outcome.note.isEmpty()) {
        console.Warn(QStringLiteral("%1: %2").arg(Text(out), outcome.note));
    }
}

/// Marks a file in place, without writing its pixels anew where the format allows it.
void MarkPanorama(const std::string& file, Console& console)
{
    const CZemtarString name = CZemtarConvert::QStringToCZemtarString(Text(file));
    int width = 0;
    int height = 0;
    if (!ZemtarImage::GetImageSize(name, width, height)) {
        console.Error(QStringLiteral("%1: it is no picture that can be read").arg(Text(file)));
        return;
    }
    const QDateTime before = QFileInfo(Text(file)).lastModified();
    if (!ZemtarImage::SaveQImageWithXMPMetaData(name, width, height, name.Extension())) {
        console.Error(
            QStringLiteral("%1: only PNG and JPEG files can be marked as panoramas").arg(Text(file)));
    } else if (QFileInfo(Text(file)).lastModified() == before) {
        console.Error(QStringLiteral("%1: the mark could not be written").arg(Text(file)));
    }
}

void AddOperation(CLI::App& image, const std::string& word, const std::string& help,
                  const ImageOperation* operation, Console& console)
{
    const auto made = std::make_shared<ImageCommand>();
    made->operation = operation;
    CLI::App* command = image.add_subcommand(word, help);
    made->Declare(*command);
    command->callback([made, &console] { made->Run(console); });
}

} // namespace

void AddImageCommand(CLI::App& program, Console& console)
{
    CLI::App* image = program.add_subcommand("image", "Work on texture images");
    image->require_subcommand(1);
    image->fallthrough();
    for (const ImageOperation& operation : ImageOperations()) {
        AddOperation(*image, ImageOperationWord(operation.name).toStdString(), operation.help, &operation,
                     console);
    }
    AddOperation(*image, "convert",
                 "Write the picture in another format; EXR keeps the range of HDR and EXR files", nullptr,
                 console);
    const auto file = std::make_shared<std::string>();
    CLI::App* panorama =
        image->add_subcommand("panorama", "Mark a PNG or JPEG file as a 360 degree panorama, in place");
    panorama->add_option("FILE", *file, "The picture")->required();
    panorama->callback([file, &console] { MarkPanorama(*file, console); });
}
