#include "importexport/widgets/filedropfilter.h"

#include <QDir>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>

namespace olvex {

namespace {

// The first local file of the dragged data; empty when the data is no list of files.
QString firstFile(const QMimeData *data)
{
    if (!data || !data->hasUrls())
        return {};
    const QList<QUrl> urls = data->urls();
    if (urls.isEmpty() || !urls.constFirst().isLocalFile())
        return {};
    return QDir::toNativeSeparators(urls.constFirst().toLocalFile());
}

} // namespace

FileDropFilter::FileDropFilter(QLineEdit *box)
    : QObject(box)
    , m_box(box)
{
    box->setAcceptDrops(true);
    box->installEventFilter(this);
}

bool FileDropFilter::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_box)
        return false;
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDragMoveEvent *>(event);
        if (m_box->isEnabled() && !firstFile(drag->mimeData()).isEmpty()) {
            drag->setDropAction(Qt::CopyAction);
            drag->accept();
        } else {
            drag->setDropAction(Qt::IgnoreAction);
            drag->ignore();
        }
        return true; // the box's own text drop stays out of it
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const QString file = firstFile(drop->mimeData());
        if (!m_box->isEnabled() || file.isEmpty()) {
            drop->ignore();
            return true;
        }
        m_box->setText(file);
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        return true;
    }
    default:
        return false;
    }
}

} // namespace olvex
