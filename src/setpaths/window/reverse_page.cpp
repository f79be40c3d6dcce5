#include "setpaths/window/reverse_page.h"

#include <QFile>
#include <QObject>
#include <QSignalBlocker>

#include "ui_setup.h"

namespace setpaths {

ReversePage::ReversePage(const SetupWindowHost &host, Ui::SetUp &ui, std::function<void(const QString &)> say)
    : host_(host), ui_(ui), say_(std::move(say)) {
    QObject::connect(ui_.reverse_viewer, &QComboBox::currentIndexChanged, ui_.reverse_page,
                     [this] { show(); });
    QObject::connect(ui_.write_reverse, &QPushButton::clicked, ui_.reverse_page, [this] { write(); });
}

void ReversePage::look() {
    found_ = host_.reverse_searches(host_.home);
    const QString before = ui_.reverse_viewer->currentText();
    const QSignalBlocker quiet(ui_.reverse_viewer);
    ui_.reverse_viewer->clear();
    for (const ReverseSearch &wanted : found_)
        ui_.reverse_viewer->addItem(QFile::decodeName(wanted.viewer.c_str()));
    if (const int row = ui_.reverse_viewer->findText(before); row >= 0)
        ui_.reverse_viewer->setCurrentIndex(row);
    show();
}

// Shows the lines for the viewer that is chosen.
void ReversePage::show() {
    const int row = ui_.reverse_viewer->currentIndex();
    const bool some = row >= 0 && row < static_cast<int>(found_.size());
    const ReverseSearch *const wanted = some ? &found_[static_cast<std::size_t>(row)] : nullptr;
    ui_.reverse_viewer->setEnabled(some);
    ui_.write_reverse->setEnabled(some && !wanted->is_set && !wanted->runs);
    const QString text =
        some ? QString::fromUtf8(host_.described(*wanted).c_str())
             : QObject::tr("No viewer is installed that keeps the command in a settings file.");
    if (ui_.reverse_text->toPlainText() != text)
        ui_.reverse_text->setPlainText(text);
}

void ReversePage::write() {
    const int row = ui_.reverse_viewer->currentIndex();
    if (row < 0)
        return;
    std::string said;
    host_.write_reverse_search(found_[static_cast<std::size_t>(row)], &said);
    say_(QString::fromUtf8(said.c_str()));
    look();
    // A button that is grey by now has let go of the keyboard.
    ui_.reverse_viewer->setFocus();
}

} // namespace setpaths
