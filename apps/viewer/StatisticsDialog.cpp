#include "apps/viewer/StatisticsDialog.h"

#include "apps/viewer/NodeBounds.h"
#include "apps/viewer/NodeList.h"
#include "apps/viewer/ViewerSettings.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

const QString Purpose = QStringLiteral("Export");

QString SummaryOf(const NodeList& nodes, const BillOfMaterials& bill)
{
    const QLocale locale;
    const NodeCounts& totals = nodes.Totals();
    QString text =
        StatisticsDialog::tr("%1 nodes: %2 assemblies, %3 parts of %4 kinds, %5 meshes, %6 polylines\n"
                             "%7 triangles, %8 vertices, %9 segments")
            .arg(locale.toString(totals.nodes), locale.toString(totals.assemblies),
                 locale.toString(bill.PartCount()), locale.toString(static_cast<qint64>(bill.Lines().size())),
                 locale.toString(totals.meshes), locale.toString(totals.polylines),
                 locale.toString(totals.triangles), locale.toString(totals.vertices),
                 locale.toString(totals.segments));
    if (bill.TotalVolume() > 0.0) {
        text += '\n' + StatisticsDialog::tr("Volume of all parts where it is known: %1 cm³")
                           .arg(locale.toString(bill.TotalVolume() * 1e6, 'g', 6));
    }
    return text;
}

} // namespace

StatisticsDialog::StatisticsDialog(const NodeList& nodes, const QString& sourceFile, QWidget* parent)
    : QDialog(parent), m_bill(nodes), m_sourceFile(sourceFile), m_table(new QTableWidget(this))
{
    setObjectName(QStringLiteral("statistics"));
    setWindowTitle(tr("Statistics of %1").arg(QFileInfo(sourceFile).fileName()));
    FillTable();
    connect(m_table, &QTableWidget::cellDoubleClicked, this,
            [this](int row) { emit Chosen(m_table->item(row, 0)->data(Qt::UserRole).toInt()); });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* save = buttons->addButton(tr("&Save as CSV..."), QDialogButtonBox::ActionRole);
    connect(save, &QPushButton::clicked, this, &StatisticsDialog::AskWhereToSave);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* summary = new QLabel(SummaryOf(nodes, m_bill), this);
    summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(summary);
    layout->addWidget(m_table, 1);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 30);
}

void StatisticsDialog::FillTable()
{
    const QStringList titles = m_bill.Titles();
    m_table->setColumnCount(static_cast<int>(titles.size()));
    m_table->setHorizontalHeaderLabels(titles);
    m_table->setRowCount(static_cast<int>(m_bill.Lines().size()));
    m_table->verticalHeader()->hide();
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setAlternatingRowColors(true);
    int row = 0;
    for (const BillOfMaterials::Line& line : m_bill.Lines()) {
        int column = 0;
        for (const QString& value : m_bill.Values(line)) {
            auto* item = new QTableWidgetItem(value);
            bool isNumber = false;
            const double number = value.toDouble(&isNumber);
            if (isNumber) { // sorted as one
                item->setData(Qt::DisplayRole, number);
            }
            item->setToolTip(value);
            item->setData(Qt::UserRole, line.position);
            m_table->setItem(row, column++, item);
        }
        ++row;
    }
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(-1, Qt::AscendingOrder); // as the document has them
    m_table->resizeColumnsToContents();
}

QString StatisticsDialog::Save(const QString& file) const
{
    QSaveFile target(file);
    if (!target.open(QIODevice::WriteOnly)) {
        return target.errorString();
    }
    target.write(m_bill.ToCsv());
    return target.commit() ? QString() : target.errorString();
}

void StatisticsDialog::AskWhereToSave()
{
    ViewerSettings settings;
    const QString folder = settings.Folder(Purpose);
    const QString proposal =
        QDir(folder.isEmpty() ? QFileInfo(m_sourceFile).absolutePath() : folder)
            .filePath(QFileInfo(m_sourceFile).completeBaseName() + QStringLiteral(".csv"));
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Save the bill of materials"), proposal, tr("CSV (*.csv)"));
    if (file.isEmpty()) {
        return;
    }
    settings.SetFolderOf(Purpose, file);
    if (const QString problem = Save(file); !problem.isEmpty()) {
        QMessageBox::warning(this, windowTitle(), tr("%1 cannot be written: %2").arg(file, problem));
    }
}
