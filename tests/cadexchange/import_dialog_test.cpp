// The options dialog: its form, and the settings that outlive it.

#include "cadexchange/CZemtarCADExchangeImportDlg.h"
#include "host/CZemtarBranding.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QUuid>
#include <gtest/gtest.h>

using Zemtar::CZemtarBranding;
using Dialog = Zemtar::CZemtarCADExchangeImportDlg;

TEST(ImportDialog, FormIsAsLaidOut)
{
    Dialog dialog("form", nullptr);
    const Qt::WindowFlags qtsOwn = Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    EXPECT_EQ(dialog.windowFlags() & ~qtsOwn, Qt::Tool | Qt::WindowCloseButtonHint);
    EXPECT_EQ(dialog.size(), QSize(444, 118));
    const QVariant cases[][3] = {
        {"label_4", "text", "Fine (More Memory)"},
        {"label_5", "text", "Coarse"},
        {"tesselationSlider", "minimum", 20},
        {"parallelProcessingCheckBox", "text", "Parallel Processing"},
        {"parallelProcessingCheckBox", "toolTip",
         "<html><head/><body><p>(<span style=\" font-weight:600;\">Experimental</span>) Check this option to "
         "increase "
         "the importer speed, uncheck when more reliable importer required</p></body></html>"},
        {"gridLayout", "spacing", 9},
    };
    for (const auto& [object, property, value] : cases) {
        EXPECT_EQ(dialog.findChild<QObject*>(object.toString())->property(property.toByteArray()), value);
    }
    QMetaObject::invokeMethod(dialog.findChild<QObject*>("okButtonBox"), "accepted");
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(ImportDialog, ValuesLastPerImporter)
{
    const QString importer = QUuid::createUuid().toString();
    for (const int value : {50, 77, 1000}) {
        Dialog dialog(importer, nullptr);
        EXPECT_EQ(dialog.GetIsParallelProcessing(), value != 50);
        dialog.findChild<QObject*>("tesselationSlider")->setProperty("value", value);
        dialog.findChild<QObject*>("parallelProcessingCheckBox")->setProperty("checked", true);
        dialog.close();
    }
    const auto* branding = CZemtarBranding::getInstance();
    QSettings store(branding->getString(CZemtarBranding::OrganizationName).c_str(),
                    branding->getString(CZemtarBranding::ApplicationName).c_str());
    EXPECT_EQ(store.value("Importers/" + importer + "/TesselationValue").toInt(), 95)
        << "stored without acceptance";
    EXPECT_TRUE(store.value("Importers/" + importer + "/ParallelProcessing").toBool());
    EXPECT_EQ(Dialog(importer, nullptr).GetTesselationValue(), 95);
    EXPECT_EQ(Dialog(QUuid::createUuid().toString(), nullptr).GetTesselationValue(), 50);
}

int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
