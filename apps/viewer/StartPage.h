#pragma once

#include <QWidget>

class QAction;
class QListWidget;
class QListWidgetItem;

/// What the window shows while no document is open: the first things to do, and the files last imported.
class StartPage : public QWidget
{
    Q_OBJECT

public:
    /// The actions become the page's buttons, in their order.
    explicit StartPage(const QList<QAction*>& actions, QWidget* parent = nullptr);

    void SetRecentFiles(const QStringList& files);

signals:
    void RecentFileChosen(const QString& file);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Choose(const QListWidgetItem* item);
    QWidget* MakeHeading();
    QWidget* MakeButton(QAction* action);

    QWidget* m_recentHeading;
    QListWidget* m_recent;
};
