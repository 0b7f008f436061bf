#include "apps/viewer/NoticeBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

NoticeBar::NoticeBar(const QString& answer, QWidget* parent) : QFrame(parent), m_text(new QLabel(this))
{
    setObjectName(QStringLiteral("notice"));
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    m_text->setForegroundRole(QPalette::ToolTipText);
    auto* yes = new QPushButton(answer, this);
    yes->setObjectName(QStringLiteral("answer"));
    auto* no = new QPushButton(tr("Not now"), this);
    connect(yes, &QPushButton::clicked, this, &NoticeBar::Answered);
    connect(no, &QPushButton::clicked, this, &NoticeBar::Dismissed);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->addWidget(m_text, 1);
    row->addWidget(yes);
    row->addWidget(no);
    hide();
}

void NoticeBar::Say(const QString& text)
{
    m_text->setText(text);
    show();
}
