#include <cstdlib>

#include "common/offered_applications.h"
#include "support/temporary_home.h"

using namespace common;
using quillon::test::in_child;
using quillon::test::TemporaryHome;

namespace {

// A home in which the system's desktop entries are in the folder shared/applications.
struct Desktop : TemporaryHome {
    Desktop() {
        file("data/Quillon/editors.table",
             "kate | org.kde.kate | %f\nemacs | emacs | %f\nnano | nano | %f | %f | terminal\n");
        file("data/Quillon/viewers.table", "zathura | org.pwmt.zathura | %d\nokular | org.kde.okular | %d\n");
    }
    void entry(const std::string &id, const std::string &keys, const char *folder = "shared") const {
        file(std::string(folder) + "/applications/" + id + ".desktop",
             "[Desktop Entry]\nType=Application\nExec=true %f\nName=" + id + "\n" + keys);
    }
    // Runs CHECK in a child whose desktop this is; its result.
    int within(const std::function<int()> &check) const {
        return in_child([&] {
            ::setenv("XDG_DATA_DIRS", folder("shared").c_str(), 1);
            ::setenv("XDG_CONFIG_DIRS", folder("etc").c_str(), 1);
            ::unsetenv("XDG_CURRENT_DESKTOP");
            return check();
        });
    }
};

std::string ids(const std::vector<DesktopEntry> &entries) {
    std::string list;
    for (const DesktopEntry &entry : entries)
        list += (list.empty() ? "" : " ") + entry.id;
    return list;
}

std::string offered(Use use) {
    return ids(applications_for(use, installed_applications()));
}

std::string proposed(Use use) {
    DesktopEntry entry;
    return read_desktop_entry(proposed_application(use, installed_applications()), entry) ? entry.id : "";
}

} // namespace

TEST(InstalledApplications, AreThoseThatThisDesktopShows) {
    const Desktop desktop;
    for (const char *const key :
         {"NoDisplay=true", "Hidden=true", "TryExec=/no/such/program", "OnlyShowIn=Else;", "NotShowIn=Here;"})
        desktop.entry(std::string("x") + key[0] + key[2], key + std::string("\n"));
    desktop.entry("b", "");
    desktop.entry("org.quillon.Shell", "");
    desktop.entry("a", "");
    desktop.entry("a", "Name[fr]=Z\n", "data");
    EXPECT_EQ(desktop.within([] {
        ::setenv("XDG_CURRENT_DESKTOP", "Here", 1);
        ::setenv("LC_ALL", "fr_CA.UTF-8", 1);
        const std::vector<DesktopEntry> found = installed_applications();
        // The person's own entry hides the system's, and its name is the one in the person's language.
        return ids(found) == "a b" || (ids(found) == "b a" && found[1].name == "Z") ? 0 : 1;
    }),
              0);
}

TEST(OfferedApplications, AreThoseThatOpenTheType) {
    const Desktop desktop;
    desktop.entry("player", "MimeType=audio/ogg;\n");
    desktop.entry("browser", "MimeType=text/html;application/pdf;\n");
    desktop.entry("reader", "MimeType=application/pdf;\nCategories=Office;Viewer;\n");
    desktop.entry("org.kde.okular", "MimeType=application/pdf;application/postscript;\n");
    desktop.entry("org.pwmt.zathura", "MimeType=application/pdf;\n");
    EXPECT_EQ(desktop.within([] {
        if (offered(Use::pdf_viewer) != "org.pwmt.zathura org.kde.okular reader browser")
            return 1;
        if (offered(Use::postscript_viewer) != "org.kde.okular" || offered(Use::dvi_viewer) != "")
            return 2;
        return offered(Use::any) == "browser org.kde.okular org.pwmt.zathura player reader" ? 0 : 3;
    }),
              0);
}

TEST(OfferedApplications, WhatTheDesktopChoseComesFirst) {
    const Desktop desktop;
    desktop.entry("browser", "MimeType=application/pdf;\n");
    desktop.entry("org.pwmt.zathura", "MimeType=application/pdf;\n");
    desktop.entry("other", "");
    EXPECT_EQ(desktop.within([&] {
        if (proposed(Use::pdf_viewer) != "org.pwmt.zathura")
            return 1;
        desktop.file("etc/mimeapps.list", "[Added Associations]\napplication/pdf=other.desktop;\n");
        if (offered(Use::pdf_viewer) != "org.pwmt.zathura browser other")
            return 2;
        desktop.file("etc/mimeapps.list",
                     "[Default Applications]\napplication/pdf=none.desktop;browser.desktop;\n"
                     "[Removed Associations]\napplication/pdf=org.pwmt.zathura.desktop\n");
        if (proposed(Use::pdf_viewer) != "browser" || offered(Use::pdf_viewer) != "browser")
            return 3;
        // The person's own list, and the one for this desktop, count more.
        desktop.file("config/mimeapps.list", "[Default Applications]\napplication/pdf=other.desktop\n");
        if (proposed(Use::pdf_viewer) != "other")
            return 4;
        ::setenv("XDG_CURRENT_DESKTOP", "Here", 1);
        desktop.file("config/here-mimeapps.list",
                     "[Default Applications]\napplication/pdf=browser.desktop\n");
        return offered(Use::pdf_viewer).starts_with("browser") ? 0 : 5;
    }),
              0);
}

TEST(OfferedApplications, AnEditorIsNoViewer) {
    const Desktop desktop;
    desktop.entry("emacs", "MimeType=application/pdf;text/plain;\n");
    desktop.entry("words", "MimeType=application/pdf;text/plain;\nCategories=TextEditor;\n");
    EXPECT_EQ(desktop.within([&] {
        desktop.file("config/mimeapps.list", "[Default Applications]\napplication/pdf=emacs.desktop\n");
        if (proposed(Use::pdf_viewer) != "" || offered(Use::pdf_viewer) != "")
            return 1;
        return offered(Use::editor) == "emacs words" ? 0 : 2;
    }),
              0);
}

TEST(OfferedApplications, AnEditorIsProposedBeforeWhatOnlyOpensTexts) {
    const Desktop desktop;
    desktop.entry("office", "MimeType=text/plain;\n");
    EXPECT_EQ(desktop.within([&] {
        desktop.file("config/mimeapps.list", "[Default Applications]\ntext/plain=office.desktop\n");
        if (proposed(Use::editor) != "" || offered(Use::editor) != "office")
            return 1;
        desktop.entry("nano", "MimeType=text/plain;\nTerminal=true\n");
        if (proposed(Use::editor) != "nano")
            return 2;
        desktop.entry("org.kde.kate", "MimeType=text/plain;\n");
        return offered(Use::editor) == "org.kde.kate nano office" ? 0 : 3;
    }),
              0);
}
