#pragma once

#include <QFrame>

class QLabel;

/// A line above the documents that says what has happened and offers one answer to it.
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    NoticeBar(const QString& answer, QWidget* parent);

    void Say(const QString& text);

signals:
    void Answered();
    /// The user closed it unanswered.
    void Dismissed();

private:
    QLabel* m_text;
};
