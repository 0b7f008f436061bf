#include "cadexchange/CZemtarCADExchangeImportDlg.h"

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "host/CZemtarBranding.h"
#include "ui_CZemtarCADExchangeImportDlg.h"

#include <QIcon>
#include <QSettings>

#include <utility>

namespace Zemtar {

namespace {

constexpr const char* TessellationKey = "TesselationValue";
constexpr const char* ParallelKey = "ParallelProcessing";

QString BrandingText(CZemtarBranding::String which)
{
    return QString::fromUtf8(CZemtarBranding::getInstance()->getString(which));
}

/// The host's settings store with the importer's group open.
class ImporterSettings : public QSettings
{
public:
    explicit ImporterSettings(const QString& importerName)
        : QSettings(BrandingText(CZemtarBranding::OrganizationName),
                    BrandingText(CZemtarBranding::ApplicationName))
    {
        beginGroup(QStringLiteral("Importers"));
        beginGroup(importerName);
    }
    ~ImporterSettings() override
    {
        endGroup();
        endGroup();
    }
};

} // namespace

CZemtarCADExchangeImportDlg::CZemtarCADExchangeImportDlg(QString importerName, QWidget* parent)
    : QDialog(parent),
      m_form(std::make_unique<Ui_CZemtarCADExchangeImportDlg>()),
      m_importerName(std::move(importerName))
{
    m_form->setupUi(this);
    setWindowFlags(Qt::Tool | Qt::WindowCloseButtonHint);
    setWindowIcon(QIcon(BrandingText(CZemtarBranding::WindowIcon)));
    FillDialogData();
}

CZemtarCADExchangeImportDlg::~CZemtarCADExchangeImportDlg()
{
    SaveDialogData();
}

void CZemtarCADExchangeImportDlg::FillDialogData()
{
    const ImporterSettings settings(m_importerName);
    m_form->tesselationSlider->setValue(
        settings.value(TessellationKey, CZemtarCADExchangeReader::DefaultTessellationFactor).toInt());
    m_form->parallelProcessingCheckBox->setChecked(
        settings.value(ParallelKey, CZemtarCADExchangeReader::DefaultParallelProcessing).toBool());
}

void CZemtarCADExchangeImportDlg::SaveDialogData()
{
    ImporterSettings settings(m_importerName);
    settings.setValue(TessellationKey, GetTesselationValue());
    settings.setValue(ParallelKey, GetIsParallelProcessing());
}

int CZemtarCADExchangeImportDlg::GetTesselationValue()
{
    return m_form->tesselationSlider->value();
}

bool CZemtarCADExchangeImportDlg::GetIsParallelProcessing()
{
    return m_form->parallelProcessingCheckBox->isChecked();
}

} // namespace Zemtar
