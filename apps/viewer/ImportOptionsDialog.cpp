#include "apps/viewer/ImportOptionsDialog.h"

#include "apps/viewer/ViewerSettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

ImportOptionsDialog::ImportOptionsDialog(QWidget* parent)
    : QDialog(parent),
      m_polylines(new QCheckBox(tr("Import curves and wires as &polylines"), this)),
      m_keepTextures(new QCheckBox(tr("&Keep the textures of imported models in this folder:"), this)),
      m_textureFolder(new QLineEdit(this))
{
    setObjectName(QStringLiteral("importOptions"));
    setWindowTitle(tr("Import Options"));
    const ViewerSettings settings;
    m_polylines->setChecked(settings.PolyLines());
    m_polylines->setToolTip(tr("Takes effect with the next import"));
    m_keepTextures->setChecked(!settings.TextureFolder().isEmpty());
    m_keepTextures->setToolTip(tr("Otherwise they last as long as the document is open"));
    m_textureFolder->setText(QDir::toNativeSeparators(settings.TextureFolder()));
    m_textureFolder->setMinimumWidth(40 * fontMetrics().averageCharWidth());
    auto* browse = new QToolButton(this);
    browse->setText(tr("..."));
    browse->setToolTip(tr("Choose the folder"));
    connect(browse, &QToolButton::clicked, this, [this] {
        const QString folder =
            QFileDialog::getExistingDirectory(this, tr("Texture Folder"), m_textureFolder->text());
        if (!folder.isEmpty()) {
            m_textureFolder->setText(QDir::toNativeSeparators(folder));
        }
    });
    for (QWidget* widget : {static_cast<QWidget*>(m_textureFolder), static_cast<QWidget*>(browse)}) {
        widget->setEnabled(m_keepTextures->isChecked());
        connect(m_keepTextures, &QCheckBox::toggled, widget, &QWidget::setEnabled);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportOptionsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(m_textureFolder, 1);
    folderRow->addWidget(browse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_polylines);
    layout->addWidget(m_keepTextures);
    layout->addLayout(folderRow);
    layout->addStretch();
    layout->addWidget(buttons);
}

void ImportOptionsDialog::accept()
{
    ViewerSettings settings;
    settings.SetPolyLines(m_polylines->isChecked());
    settings.SetTextureFolder(m_keepTextures->isChecked()
                                  ? QDir::fromNativeSeparators(m_textureFolder->text().trimmed())
                                  : QString());
    QDialog::accept();
}
