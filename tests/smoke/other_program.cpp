// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>

namespace {

/// A window of another program, all magenta: a press puts an image of 48 by 32 pixels on the
/// clipboard, a drag out of it carries the files that the command line names.
class OtherProgram final : public QWidget {
public:
    OtherProgram() : QWidget(nullptr, Qt::FramelessWindowHint) {
        setFixedSize(120, 120);
        setPalette(QPalette(QColor(255, 0, 255)));
    }

private:
    static QMimeData* files(qsizetype first, qsizetype count) {
        QList<QUrl> urls;
        for (const QString& path : QCoreApplication::arguments().mid(first, count))
            urls << QUrl::fromLocalFile(path);
        auto* data = new QMimeData; // the clipboard and the drag delete it
        data->setUrls(urls);
        return data;
    }
    void mousePressEvent(QMouseEvent*) override {
        QGuiApplication::clipboard()->setMimeData(files(1, 1));
    }
    void mouseMoveEvent(QMouseEvent*) override {
        auto* drag = new QDrag(this); // deletes itself
        drag->setMimeData(files(2, -1));
        drag->exec(Qt::CopyAction);
    }
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    OtherProgram window;
    window.show();
    return QApplication::exec();
}
