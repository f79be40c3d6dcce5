// The applications that the desktop offers: what is offered can be started, and has the name and the icon of
// the entry that is started.
#include "common/desktop_entry.h"
#include "common/utf8.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"
#include "widgets/desktop_entries.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {
    "[Desktop Entry]\n",
    "[Desktop Entry]\nType=Application\nExec=view %f\nName=A\\sB\\\\s\n",
    "[Desktop Entry]\nType=Application\nName=A B\nIcon=eye\nExec=",
    "[Desktop Action x]\n",
    "Type=Application\n",
    "Type=Link\n",
    "Exec=\n",
    "Exec=x\n",
    "\nName=Other\n",
    "\nName[de]=Anders\n",
    "Icon=\\n\\x\\\n",
    "Comment=say\n",
    "NoDisplay=true\n",
    "Hidden=true\n",
    "OnlyShowIn=KDE;GNOME\n",
    "NotShowIn=KDE;\n",
    "TryExec=none-such\n",
    "TryExec=sh\n",
    "# Exec=no\n",
    " ",
    "\t",
    "\n",
    "\r\n",
    "=",
    "[",
    "\\",
    "\xC3\xA9"};
const int fuzz_runs = 1500;

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    static const bool desktop = ::setenv("XDG_CURRENT_DESKTOP", "GNOME:X", 1) == 0;
    // An entry that is hidden is not offered, whatever it says further on.
    const std::string hidden = "[Desktop Entry]\nType=Application\nExec=x\nHidden=true\n";
    const std::string path = home.file("data/applications/x.desktop", hidden + input);
    require(widgets::read_desktop_entry(QString::fromStdString(path)).path.isEmpty(),
            "a hidden entry is offered");
    home.file("data/applications/x.desktop", input);
    const widgets::DesktopEntry offered = widgets::read_desktop_entry(QString::fromStdString(path));
    common::DesktopEntry started;
    const bool starts = common::read_desktop_entry(path, started);
    require(desktop && (offered.path.isEmpty() || starts),
            "an application is offered that cannot be started");
    // The two differ in what they make of bytes that are no text.
    if (offered.path.isEmpty() || !common::is_utf8(input))
        return;
    require(offered.path.toStdString() == path, "an entry has another path");
    require(input.find("Name[") != std::string::npos || offered.name.toStdString() == started.name,
            "an application is offered under another name");
    require(offered.icon.toStdString() == started.icon, "an application is offered with another icon");
}

} // namespace quillon::test
