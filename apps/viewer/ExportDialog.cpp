#include "apps/viewer/ExportDialog.h"

#include "apps/shared/LengthUnits.h"
#include "apps/viewer/ViewerSettings.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>

using namespace Zemtar;

namespace {

const QString Purpose = QStringLiteral("Export");

} // namespace

ExportDialog::ExportDialog(const QString& sourceFile, QWidget* parent)
    : QDialog(parent),
      m_file(new QLineEdit(this)),
      m_format(new QComboBox(this)),
      m_unit(new QComboBox(this)),
      m_jtSplit(new QComboBox(this)),
      m_packing(new QComboBox(this)),
      m_packingLabel(new QLabel(tr("&Compression:"), this)),
      m_jtLabel(new QLabel(tr("&Split JT:"), this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this))
{
    setObjectName(QStringLiteral("export"));
    setWindowTitle(tr("Export %1").arg(QFileInfo(sourceFile).fileName()));
    FillChoices();
    Arrange();
    const QString folder = ViewerSettings().Folder(Purpose);
    m_file->setText(QDir::toNativeSeparators(
        QDir(folder.isEmpty() ? QFileInfo(sourceFile).absolutePath() : folder)
            .filePath(tr("%1 export").arg(QFileInfo(sourceFile).completeBaseName()))));
    UseFormat();
    connect(m_format, &QComboBox::activated, this, &ExportDialog::UseFormat);
    connect(m_file, &QLineEdit::editingFinished, this, &ExportDialog::UseExtension);
    connect(m_file, &QLineEdit::textChanged, this, &ExportDialog::Check);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &ExportDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &ExportDialog::reject);
    m_file->setFocus();
}

void ExportDialog::FillChoices()
{
    const ViewerSettings settings;
    for (const auto* formats : {&AllFormats(), &SceneFormats()}) {
        for (const FormatEntry& format : *formats) {
            if (format.CanWrite()) {
                m_format->addItem(QStringLiteral("%1 (*.%2)").arg(format.Name(), format.Extensions().first()),
                                  format.Name());
            }
        }
    }
    m_format->setCurrentIndex(std::max(0, m_format->findData(settings.ExportFormat())));
    for (const LengthUnit& unit : AllLengthUnits()) {
        const QString name = QCoreApplication::translate("LengthUnits", unit.name);
        m_unit->addItem(QStringLiteral("%1 (%2)").arg(name, QString::fromLatin1(unit.symbol)), unit.unit);
    }
    m_unit->setCurrentIndex(m_unit->findData(settings.ExportUnit()));
    m_jtSplit->addItem(tr("as the engine likes"), ExportSettings::JTSplitNotSet);
    m_jtSplit->addItem(tr("one file"), 0);
    m_jtSplit->addItem(tr("one file a part"), 1);
    const auto addPacking = [this](const QString& text, GlbPacking packing) {
        m_packing->addItem(text, static_cast<int>(packing));
    };
    addPacking(tr("none"), GlbPacking::None);
    addPacking(tr("16 bits a coordinate"), GlbPacking::Quantize);
    if (HasMeshopt()) {
        addPacking(tr("16 bits a coordinate, packed (meshopt)"), GlbPacking::Meshopt);
    }
    m_packing->setCurrentIndex(std::max(0, m_packing->findData(settings.GlbPackingChoice())));
}

void ExportDialog::Arrange()
{
    m_file->setObjectName(QStringLiteral("file"));
    m_format->setObjectName(QStringLiteral("format"));
    m_unit->setObjectName(QStringLiteral("unit"));
    m_file->setMinimumWidth(50 * fontMetrics().averageCharWidth());
    m_unit->setToolTip(tr("The unit that lengths are written in"));
    m_jtSplit->setToolTip(tr("How a JT export is divided into files"));
    m_jtLabel->setBuddy(m_jtSplit);
    m_packing->setObjectName(QStringLiteral("packing"));
    m_packing->setToolTip(tr("Smaller files; programs must know the glTF extensions that unpack them"));
    m_packingLabel->setBuddy(m_packing);
    m_buttons->button(QDialogButtonBox::Save)->setText(tr("&Export"));
    auto* browse = new QToolButton(this);
    browse->setText(tr("..."));
    browse->setToolTip(tr("Choose the file"));
    connect(browse, &QToolButton::clicked, this, &ExportDialog::Browse);
    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(browse);
    auto* form = new QFormLayout;
    form->addRow(tr("Fo&rmat:"), m_format);
    form->addRow(tr("&Length unit:"), m_unit);
    form->addRow(m_jtLabel, m_jtSplit);
    form->addRow(m_packingLabel, m_packing);
    form->addRow(tr("&File:"), fileRow);
    qobject_cast<QLabel*>(form->labelForField(fileRow))->setBuddy(m_file);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(new QLabel(tr("Shapes are written as facets, as fine as they were imported."), this));
    layout->addStretch();
    layout->addWidget(m_buttons);
}

const FormatEntry& ExportDialog::Format() const
{
    return *ExportFormatByName(m_format->currentData().toString());
}

QString ExportDialog::File() const
{
    return QDir::fromNativeSeparators(m_file->text().trimmed());
}

void ExportDialog::SetFile(const QString& file)
{
    m_file->setText(QDir::toNativeSeparators(file));
    UseExtension();
}

ExportSettings ExportDialog::Settings() const
{
    ExportSettings settings;
    settings.format = &Format();
    settings.unit = static_cast<enumLengthUnit>(m_unit->currentData().toInt());
    settings.jtSplit = m_jtSplit->currentData().toInt();
    settings.packing = static_cast<GlbPacking>(m_packing->currentData().toInt());
    return settings;
}

/// Gives the file name the extension of the chosen format, in place of another format's.
void ExportDialog::UseFormat()
{
    const bool isJT =
        Format().scene == SceneFormat::None && Format().writer == CZemtarCADExchangeWriter::eWriterJT;
    m_unit->setEnabled(Format().scene != SceneFormat::GLB); // which has metres
    m_jtSplit->setVisible(isJT);
    m_jtLabel->setVisible(isJT);
    const bool isGlb = Format().scene == SceneFormat::GLB;
    m_packing->setVisible(isGlb);
    m_packingLabel->setVisible(isGlb);
    QString file = File();
    const FormatEntry* named = ExportFormatByFileName(file);
    if (named != &Format() && !file.isEmpty()) {
        if (named) {
            file.chop(QFileInfo(file).suffix().size() + 1);
        }
        m_file->setText(QDir::toNativeSeparators(file + '.' + Format().Extensions().first()));
    }
    Check();
}

/// Takes the format from the extension that the user typed, where one that can be written has it.
void ExportDialog::UseExtension()
{
    const FormatEntry* named = ExportFormatByFileName(File());
    const int index = named ? m_format->findData(named->Name()) : -1;
    if (index >= 0) {
        m_format->setCurrentIndex(index);
    }
    UseFormat();
}

void ExportDialog::Browse()
{
    QStringList filters;
    for (int i = 0; i < m_format->count(); ++i) {
        filters << m_format->itemText(i);
    }
    QString filter = m_format->currentText();
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Export"), File(), filters.join(QStringLiteral(";;")), &filter,
                                     QFileDialog::DontConfirmOverwrite);
    if (!file.isEmpty()) {
        m_format->setCurrentText(filter);
        SetFile(file);
    }
}

void ExportDialog::Check()
{
    m_buttons->button(QDialogButtonBox::Save)->setEnabled(!QFileInfo(File()).fileName().isEmpty());
}

void ExportDialog::accept()
{
    UseExtension();
    if (!QFileInfo::exists(File())) {
        Done();
        return;
    }
    auto* question = new QMessageBox(QMessageBox::Question, tr("Export"),
                                     tr("%1 exists. Overwrite it?").arg(QFileInfo(File()).fileName()),
                                     QMessageBox::Yes | QMessageBox::No, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QDialog::finished, this, [this](int answer) {
        if (answer == QMessageBox::Yes) {
            Done();
        }
    });
    question->open();
}

void ExportDialog::Done()
{
    ViewerSettings settings;
    settings.SetExportFormat(Format().Name());
    settings.SetExportUnit(Settings().unit);
    settings.SetGlbPackingChoice(m_packing->currentData().toInt());
    settings.SetFolderOf(Purpose, File());
    QDialog::accept();
}
