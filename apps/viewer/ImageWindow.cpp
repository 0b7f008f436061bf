#include "apps/viewer/ImageWindow.h"

#include "apps/images/ImageBatch.h"
#include "apps/images/ImageOperations.h"
#include "apps/viewer/ImageComparison.h"
#include "apps/viewer/ImageIcons.h"
#include "apps/viewer/ImageParameterPanel.h"
#include "apps/viewer/ImagePreview.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

namespace {

/// Operations take as long as they take: the cursor says so.
struct Busy
{
    Busy() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Busy() { QGuiApplication::restoreOverrideCursor(); }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
};

QString SizeText(QSize size)
{
    const QLocale locale;
    return QStringLiteral("%1 \u00d7 %2").arg(locale.toString(size.width()), locale.toString(size.height()));
}

} // namespace

ImageWindow::ImageWindow(QWidget* parent) : QWidget(parent, Qt::Window), m_preview(new ImagePreview(this))
{
    setWindowTitle(tr("Images"));
    setAcceptDrops(true);
    m_tools = new QToolBar;
    m_comparison = new ImageComparison;
    m_info = new QLabel;
    m_info->setObjectName(QStringLiteral("info"));
    m_info->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_info->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_pixel = new QLabel;
    m_pixel->setObjectName(QStringLiteral("pixel"));
    BuildToolBar();

    auto* splitter = new QSplitter;
    splitter->addWidget(m_comparison);
    splitter->addWidget(BuildSide());
    splitter->setStretchFactor(0, 1);
    splitter->setCollapsible(0, false);
    auto* foot = new QHBoxLayout;
    foot->setContentsMargins(8, 0, 8, 6);
    foot->addWidget(m_info, 1);
    foot->addWidget(m_pixel);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_tools);
    rows->addWidget(BuildMessage());
    rows->addWidget(splitter, 1);
    rows->addLayout(foot);

    connect(m_comparison, &ImageComparison::Hovered, m_pixel, &QLabel::setText);
    connect(m_comparison, &ImageComparison::ZoomChanged, this, &ImageWindow::ShowInfo);
    connect(m_comparison, &ImageComparison::AreaDrawn, m_parameters, &ImageParameterPanel::SetArea);
    connect(m_parameters, &ImageParameterPanel::Changed, this, &ImageWindow::ShowArea);
    connect(m_preview, &ImagePreview::Changed, this, &ImageWindow::ShowResult);
    connect(m_parameters, &ImageParameterPanel::Changed, this,
            [this] { m_preview->SetOperation(Operation(), m_parameters->Values(), m_parameters->Second()); });
    ShowOperation();
    ShowCurrent();
}

ImageWindow::~ImageWindow() = default;

template <typename Slot>
QAction* ImageWindow::AddAction(const char* name, ImageIcon icon, const QString& text,
                                const QKeySequence& keys, Slot slot)
{
    auto* action = new QAction(MakeImageIcon(icon), text, this);
    action->setObjectName(name);
    action->setShortcut(keys);
    QString tip = text;
    tip.remove(QStringLiteral("..."));
    action->setToolTip(keys.isEmpty() ? tip
                                      : tr("%1 (%2)").arg(tip, keys.toString(QKeySequence::NativeText)));
    connect(action, &QAction::triggered, this, slot);
    m_tools->addAction(action);
    return action;
}

void ImageWindow::BuildToolBar()
{
    AddAction("open", ImageIcon::Open, tr("Open..."), QKeySequence::Open, &ImageWindow::Open);
    QAction* save =
        AddAction("save", ImageIcon::Save, tr("Save result as..."), QKeySequence::Save, &ImageWindow::SaveAs);
    auto* menu = new QMenu(this);
    auto* panorama = menu->addAction(tr("Save as 360\u00b0 panorama..."), this, &ImageWindow::SaveAsPanorama);
    panorama->setObjectName(QStringLiteral("panorama"));
    panorama->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    if (auto* button = qobject_cast<QToolButton*>(m_tools->widgetForAction(save))) {
        button->setMenu(menu);
        button->setPopupMode(QToolButton::MenuButtonPopup);
    }
    AddAction("paste", ImageIcon::Paste, tr("Paste"), QKeySequence::Paste, &ImageWindow::Paste);
    AddAction("copy", ImageIcon::Copy, tr("Copy result"), QKeySequence::Copy, &ImageWindow::Copy);
    m_tools->addSeparator();
    AddAction("undo", ImageIcon::Undo, tr("Undo"), QKeySequence::Undo, &ImageWindow::Undo);
    AddAction("redo", ImageIcon::Redo, tr("Redo"), QKeySequence::Redo, &ImageWindow::Redo);
    AddAction("revert", ImageIcon::Revert, tr("Back to the loaded picture"), Qt::CTRL | Qt::Key_R,
              &ImageWindow::Revert);
    m_tools->addSeparator();
    AddAction("zoomIn", ImageIcon::ZoomIn, tr("Zoom in"), QKeySequence::ZoomIn,
              [this] { m_comparison->ZoomBy(1.5); });
    AddAction("zoomOut", ImageIcon::ZoomOut, tr("Zoom out"), QKeySequence::ZoomOut,
              [this] { m_comparison->ZoomBy(1 / 1.5); });
    AddAction("fit", ImageIcon::Fit, tr("Fit to the window"), Qt::CTRL | Qt::Key_0,
              [this] { m_comparison->FitToWindow(); });
    AddAction("actual", ImageIcon::ActualSize, tr("One screen pixel for one pixel"), Qt::CTRL | Qt::Key_1,
              [this] { m_comparison->ActualSize(); });
    m_tools->addSeparator();
    AddAction("split", ImageIcon::Split, tr("One over the other, with a border to drag"),
              Qt::CTRL | Qt::Key_D,
              [this](bool isOn) {
                  m_comparison->SetMode(isOn ? ImageComparison::Split : ImageComparison::SideBySide);
              })
        ->setCheckable(true);
    AddAction("tile", ImageIcon::Tile, tr("Tiled, as the result meets itself"), Qt::CTRL | Qt::Key_T,
              [this](bool isOn) { m_comparison->SetTiled(isOn); })
        ->setCheckable(true);
    m_tools->addSeparator();
    AddAction("batch", ImageIcon::Batch, tr("Do this to all pictures of a folder..."), Qt::CTRL | Qt::Key_B,
              &ImageWindow::AskForBatch);
}

QWidget* ImageWindow::BuildMessage()
{
    m_message = new QFrame;
    m_message->setObjectName(QStringLiteral("message"));
    m_message->setAutoFillBackground(true);
    m_message->setBackgroundRole(QPalette::ToolTipBase);
    m_message->setForegroundRole(QPalette::ToolTipText);
    m_messageText = new QLabel;
    m_messageText->setObjectName(QStringLiteral("messageText"));
    m_messageText->setForegroundRole(QPalette::ToolTipText);
    m_messageText->setWordWrap(true);
    m_messageText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* close = new QToolButton;
    close->setText(tr("Close"));
    close->setToolTip(tr("Close the message"));
    close->setAutoRaise(true);
    close->setForegroundRole(QPalette::ToolTipText);
    connect(close, &QToolButton::clicked, m_message, &QWidget::hide);
    auto* row = new QHBoxLayout(m_message);
    row->setContentsMargins(8, 4, 8, 4);
    row->addWidget(m_messageText, 1);
    row->addWidget(close);
    m_message->hide();
    return m_message;
}

QWidget* ImageWindow::BuildSide()
{
    m_operations = new QTreeWidget;
    m_operations->setObjectName(QStringLiteral("operations"));
    m_operations->setHeaderHidden(true);
    m_operations->setRootIsDecorated(false);
    m_operations->setAccessibleName(tr("Operations"));
    m_help = new QLabel;
    m_help->setWordWrap(true);
    m_parameters = new ImageParameterPanel;
    m_defaults = new QPushButton(tr("Defaults"));
    m_defaults->setToolTip(tr("Sets the values back to those they began with"));
    m_apply = new QPushButton(tr("Apply"));
    m_apply->setObjectName(QStringLiteral("apply"));
    m_apply->setShortcut(Qt::CTRL | Qt::Key_Return);
    m_apply->setToolTip(
        tr("Goes on from the result (%1)").arg(m_apply->shortcut().toString(QKeySequence::NativeText)));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_defaults);
    buttons->addStretch(1);
    buttons->addWidget(m_apply);
    auto* side = new QWidget;
    auto* rows = new QVBoxLayout(side);
    rows->addWidget(m_operations, 1);
    rows->addWidget(m_help);
    rows->addWidget(m_parameters);
    rows->addLayout(buttons);
    side->setMinimumWidth(fontMetrics().averageCharWidth() * 36);

    FillOperations();
    connect(m_operations, &QTreeWidget::currentItemChanged, this, &ImageWindow::ShowOperation);
    connect(m_defaults, &QPushButton::clicked, this, &ImageWindow::ShowOperation);
    connect(m_apply, &QPushButton::clicked, this, &ImageWindow::Apply);
    return side;
}

void ImageWindow::FillOperations()
{
    auto* none = new QTreeWidgetItem(m_operations, {tr("No operation")});
    none->setData(0, Qt::UserRole, -1);
    none->setToolTip(0, tr("The picture as it is"));
    QTreeWidgetItem* group = nullptr;
    int index = 0;
    for (const ImageOperation& operation : ImageOperations()) {
        if (group == nullptr || group->text(0) != operation.Group()) {
            group = new QTreeWidgetItem(m_operations, {operation.Group()});
            group->setFlags(Qt::ItemIsEnabled);
            QFont font = group->font(0);
            font.setBold(true);
            group->setFont(0, font);
        }
        auto* item = new QTreeWidgetItem(group, {operation.Name()});
        item->setData(0, Qt::UserRole, index++);
        item->setToolTip(0, operation.Help());
    }
    m_operations->expandAll();
    m_operations->setItemsExpandable(false);
    m_operations->setCurrentItem(none);
}

bool ImageWindow::Load(const QString& file)
{
    const Busy busy;
    const QString name = QFileInfo(file).fileName();
    const ImageFile picture = ReadImageFile(file);
    if (picture.image.isNull()) {
        ShowMessage(tr("%1 could not be opened: %2").arg(name, picture.failure));
        return false;
    }
    m_folder = QFileInfo(file).absolutePath();
    Begin(picture, name);
    return true;
}

void ImageWindow::Begin(const ImageFile& picture, const QString& name)
{
    m_picture = picture;
    m_name = name;
    m_history.Reset(picture.image);
    ShowMessage({});
    setWindowTitle(tr("%1 - Images").arg(name));
    ShowCurrent();
    ShowOperation();
}

QImage ImageWindow::Result()
{
    const Busy busy;
    return m_preview->Whole().image;
}

bool ImageWindow::Save(const QString& file, bool isPanorama)
{
    const QImage result = Result();
    if (result.isNull()) {
        ShowMessage(tr("There is no picture to save."));
        return false;
    }
    const Busy busy;
    const QString name = QFileInfo(file).fileName();
    const bool isAsLoaded = result.cacheKey() == m_picture.image.cacheKey();
    const QString failure = isPanorama
                                ? WritePanorama(result, file)
                                : WriteImageFile(result, file, isAsLoaded ? m_picture.highRange : QString());
    if (!failure.isEmpty()) {
        ShowMessage(tr("%1 could not be saved: %2").arg(name, failure));
        return false;
    }
    const bool losesAlpha = result.hasAlphaChannel() && !KeepsAlpha(file);
    ShowMessage(losesAlpha ? tr("%1 is saved; its format keeps no transparency.").arg(name) : QString());
    m_pixel->setText(tr("%1 is saved.").arg(name));
    return true;
}

void ImageWindow::Open()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Open a picture"), m_folder, ReadableImages());
    if (!file.isEmpty()) {
        Load(file);
    }
}

void ImageWindow::SaveAs()
{
    AskWhereToSave(false);
}

void ImageWindow::SaveAsPanorama()
{
    AskWhereToSave(true);
}

void ImageWindow::AskWhereToSave(bool isPanorama)
{
    const QString title = isPanorama ? tr("Save as 360\u00b0 panorama") : tr("Save the result");
    const QString filters = isPanorama ? tr("PNG or JPEG (*.png *.jpg *.jpeg)") : WritableImages();
    QFileDialog dialog(this, title, m_folder, filters);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    const auto setSuffix = [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.section(QStringLiteral("(*."), 1)
                                    .section(QLatin1Char(')'), 0, 0)
                                    .section(QLatin1Char(' '), 0, 0));
    };
    setSuffix(dialog.selectedNameFilter());
    connect(&dialog, &QFileDialog::filterSelected, &dialog, setSuffix);
    if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
        Save(dialog.selectedFiles().constFirst(), isPanorama);
    }
}

void ImageWindow::Paste()
{
    if (!Take(QGuiApplication::clipboard()->mimeData())) {
        ShowMessage(tr("There is no picture in the clipboard."));
    }
}

bool ImageWindow::Take(const QMimeData* mime)
{
    if (mime == nullptr) {
        return false;
    }
    for (const QUrl& url : mime->urls()) {
        if (url.isLocalFile()) {
            Load(url.toLocalFile()); // a failure is told already
            return true;
        }
    }
    const QImage image = mime->hasImage() ? qvariant_cast<QImage>(mime->imageData()) : QImage();
    if (image.isNull()) {
        return false;
    }
    if (const QString refusal = RefusalOfSize(image.width(), image.height()); !refusal.isEmpty()) {
        ShowMessage(refusal);
        return true;
    }
    Begin({NormalizedImage(image), tr("pasted, %1 bits").arg(image.bitPlaneCount())}, tr("Pasted picture"));
    return true;
}

void ImageWindow::Copy()
{
    if (const QImage result = Result(); !result.isNull()) {
        QGuiApplication::clipboard()->setImage(result);
        m_pixel->setText(tr("The result is in the clipboard."));
    }
}

void ImageWindow::Apply()
{
    const ImageOperation* operation = Operation();
    const QImage result = operation != nullptr ? Result() : QImage();
    if (operation == nullptr || result.isNull()) {
        return;
    }
    m_history.Push(result, operation->Name());
    m_operations->setCurrentItem(m_operations->topLevelItem(0));
    ShowCurrent();
}

void ImageWindow::Undo()
{
    m_history.Undo();
    ShowCurrent();
}

void ImageWindow::Redo()
{
    m_history.Redo();
    ShowCurrent();
}

void ImageWindow::Revert()
{
    if (!m_history.IsOriginal()) {
        m_history.Push(m_history.Original(), tr("As loaded"));
        ShowCurrent();
    }
}

const ImageOperation* ImageWindow::Operation() const
{
    const QTreeWidgetItem* item = m_operations->currentItem();
    const int index =
        item != nullptr && item->data(0, Qt::UserRole).isValid() ? item->data(0, Qt::UserRole).toInt() : -1;
    return index >= 0 ? &ImageOperations()[std::size_t(index)] : nullptr;
}

void ImageWindow::ShowOperation()
{
    const ImageOperation* operation = Operation();
    m_help->setText(operation != nullptr ? operation->Help() : tr("Choose what is done to the picture."));
    m_parameters->SetOperation(operation, m_history.Current().size());
    m_preview->SetOperation(operation, m_parameters->Values(), m_parameters->Second());
    m_comparison->SetDrawsArea(operation != nullptr && operation->takesArea);
    UpdateActions();
}

void ImageWindow::ShowArea()
{
    const ImageValues& values = m_parameters->Values();
    if (const ImageOperation* operation = Operation(); operation != nullptr && operation->takesArea) {
        m_comparison->SetArea(QRect(int(values[2]), int(values[3]), int(values[0]), int(values[1])));
    }
}

void ImageWindow::AskForBatch()
{
    ImageBatch batch;
    batch.operation = Operation();
    batch.values = m_parameters->Values();
    batch.second = m_parameters->Second();
    batch.from = QFileDialog::getExistingDirectory(this, tr("Pictures of which folder?"), m_folder);
    if (batch.operation == nullptr || batch.from.isEmpty()) {
        return;
    }
    batch.to = QFileDialog::getExistingDirectory(this, tr("Into which folder?"), batch.from);
    if (!batch.to.isEmpty()) {
        RunBatch(batch);
    }
}

void ImageWindow::RunBatch(ImageBatch batch)
{
    batch.suffix = QStringLiteral("png");
    QProgressDialog progress(tr("Working ..."), tr("Cancel"), 0, int(batch.Files().size()), this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    const ImageBatch::Result result = batch.Run([&](int done, const QString& file) {
        progress.setLabelText(file);
        progress.setValue(done); // which turns the event loop
        return !progress.wasCanceled();
    });
    QString text = tr("%n pictures are written.", nullptr, result.written);
    if (result.isCancelled) {
        text += ' ' + tr("The rest was cancelled.");
    }
    ShowMessage((QStringList(text) + result.failures).join('\n'));
}

void ImageWindow::ShowCurrent()
{
    const QImage& current = m_history.Current();
    const QStringList names = m_history.Names();
    m_comparison->SetOriginal(current, m_history.IsOriginal() ? tr("Original")
                                                              : names.join(QStringLiteral(" \u203a ")));
    m_preview->SetInput({current, m_history.IsOriginal() ? m_picture.highRange : QString()});
    UpdateActions();
    ShowInfo();
}

void ImageWindow::ShowResult()
{
    const ImageOutcome& shown = m_preview->Shown();
    if (const QString& message = shown.failure.isEmpty() ? shown.note : shown.failure; !message.isEmpty()) {
        ShowMessage(message, true);
    } else if (m_isOperationMessage) {
        ShowMessage({});
    }
    const ImageOperation* operation = Operation();
    const QString name = operation != nullptr ? operation->Name() : tr("Result");
    m_comparison->SetResult(shown.image,
                            m_preview->IsReduced() ? m_history.Current().size() : shown.image.size(),
                            m_preview->IsReduced() ? tr("%1 (reduced preview)").arg(name) : name);
    UpdateActions();
    ShowInfo();
}

void ImageWindow::ShowInfo()
{
    const QImage& current = m_history.Current();
    if (current.isNull()) {
        m_info->clear();
        return;
    }
    QStringList parts = {m_name, SizeText(current.size()), m_picture.format,
                         current.hasAlphaChannel() ? tr("with alpha") : tr("opaque"),
                         QStringLiteral("%1 %").arg(QLocale().toString(m_comparison->Zoom() * 100, 'g', 3))};
    if (const QSize size = m_preview->Shown().image.size(); m_preview->IsReduced()) {
        parts.append(tr("preview worked out on %1").arg(SizeText(size)));
    } else if (size.isValid() && size != current.size()) {
        parts.append(tr("result %1").arg(SizeText(size)));
    }
    m_info->setText(parts.join(QStringLiteral("  \u00b7  ")));
}

void ImageWindow::ShowMessage(const QString& text, bool isOfOperation)
{
    m_messageText->setText(text);
    m_message->setVisible(!text.isEmpty());
    m_isOperationMessage = isOfOperation;
}

void ImageWindow::UpdateActions()
{
    const bool hasPicture = !m_history.Current().isNull();
    for (const char* name : {"save", "panorama", "copy", "zoomIn", "zoomOut", "fit", "actual"}) {
        findChild<QAction*>(name)->setEnabled(hasPicture);
    }
    const auto set = [this](const char* name, const QString& text, const QString& step) {
        auto* action = findChild<QAction*>(name);
        action->setEnabled(!step.isEmpty());
        const QString tip = step.isEmpty() ? text : QStringLiteral("%1: %2").arg(text, step);
        action->setToolTip(tr("%1 (%2)").arg(tip, action->shortcut().toString(QKeySequence::NativeText)));
    };
    set("undo", tr("Undo"), m_history.UndoName());
    set("redo", tr("Redo"), m_history.RedoName());
    findChild<QAction*>("revert")->setEnabled(hasPicture && !m_history.IsOriginal());
    m_apply->setEnabled(hasPicture && Operation() != nullptr && m_preview->Shown().failure.isEmpty());
    findChild<QAction*>("batch")->setEnabled(Operation() != nullptr);
    m_defaults->setEnabled(Operation() != nullptr && !Operation()->parameters.empty());
}

void ImageWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() || event->mimeData()->hasImage()) {
        event->acceptProposedAction();
    }
}

void ImageWindow::dropEvent(QDropEvent* event)
{
    if (Take(event->mimeData())) {
        event->acceptProposedAction();
    }
}
