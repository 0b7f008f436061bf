#pragma once

#include "apps/images/ImageFile.h"
#include "apps/viewer/ImageHistory.h"

#include <QWidget>

struct ImageBatch;
class ImageComparison;
class ImageParameterPanel;
class ImagePreview;
class QAction;
class QFrame;
class QLabel;
class QMimeData;
class QPushButton;
class QToolBar;
class QTreeWidget;
enum class ImageIcon;
struct ImageOperation;

/// A tool window over the image utilities: a picture beside what an operation makes of it. Operations are
/// applied one after the other, with undo; what is seen on the right is what is saved and copied.
class ImageWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ImageWindow(QWidget* parent = nullptr);
    ~ImageWindow() override;

    /// Shows a picture file; false, with the reason in the window and the picture before still there, when it
    /// cannot be read.
    bool Load(const QString& file);

    /// Saves the result in the format of the name's suffix, from the whole picture; false, with the reason in
    /// the window and no file written, when that fails. `isPanorama` adds the mark of a 360 degree panorama.
    bool Save(const QString& file, bool isPanorama = false);

    /// Does the batch with a window that shows how far it is, and tells what came of it. PNG files are
    /// written.
    void RunBatch(ImageBatch batch);

    /// The result of the whole picture, made now unless it is there; null when there is none.
    QImage Result();

public slots:
    void Open();
    void SaveAs();
    void SaveAsPanorama();
    void Paste();
    void Copy();
    /// Makes the result the picture that the next operation works on.
    void Apply();
    void Undo();
    void Redo();
    /// Goes back to the picture that was loaded; can be undone.
    void Revert();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    template <typename Slot>
    QAction* AddAction(const char* name, ImageIcon icon, const QString& text, const QKeySequence& keys,
                       Slot slot);
    void BuildToolBar();
    QWidget* BuildMessage();
    QWidget* BuildSide();
    void FillOperations();

    void Begin(const ImageFile& picture, const QString& name);
    bool Take(const QMimeData* mime);
    void AskWhereToSave(bool isPanorama);
    const ImageOperation* Operation() const;
    void ShowOperation();
    /// Marks the area that the operation takes.
    void ShowArea();
    void AskForBatch();
    void ShowCurrent();
    void ShowResult();
    void ShowInfo();
    void ShowMessage(const QString& text, bool isOfOperation = false);
    void UpdateActions();

    ImageHistory m_history;
    ImageFile m_picture; ///< As it was loaded.
    QString m_name;
    QString m_folder; ///< Where the dialogs begin.
    bool m_isOperationMessage = false;

    QToolBar* m_tools = nullptr;
    QFrame* m_message = nullptr;
    QLabel* m_messageText = nullptr;
    ImageComparison* m_comparison = nullptr;
    QTreeWidget* m_operations = nullptr;
    QLabel* m_help = nullptr;
    ImageParameterPanel* m_parameters = nullptr;
    QPushButton* m_apply = nullptr;
    QPushButton* m_defaults = nullptr;
    QLabel* m_info = nullptr;
    QLabel* m_pixel = nullptr;
    ImagePreview* m_preview = nullptr;
};
