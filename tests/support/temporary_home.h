// A fresh home for a test: a new folder under /tmp with every standard folder in it, removed afterwards, and
// the shell's global state as before start-up. /tmp/x is folder x of volume "tmp".
#ifndef QUILLON_TESTS_SUPPORT_TEMPORARY_HOME_H
#define QUILLON_TESTS_SUPPORT_TEMPORARY_HOME_H

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "files/search.h"
#include "kpath/search_paths.h"
#include "settings/settings.h"
#include "state/job_state.h"

namespace quillon::test {

class TemporaryHome {
  public:
    TemporaryHome() {
        const char *const place = std::getenv("QUILLON_TEST_HOMES"); // another folder than /tmp
        root_ = std::string(place ? place : "/tmp") + "/quillon-test-XXXXXX";
        if (!::mkdtemp(root_.data()))
            std::abort();
        ::chmod(root_.c_str(), 0755);
        for (const char *const folder : {"home", "config", "data", "cache", "run", "work"})
            std::filesystem::create_directory(root_ + "/" + folder);
        ::chmod((root_ + "/run").c_str(), 0700);
        ::setenv("HOME", (root_ + "/home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (root_ + "/data").c_str(), 1);
        ::setenv("XDG_CACHE_HOME", (root_ + "/cache").c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", (root_ + "/run").c_str(), 1);
        reset_state();
        curr_dir.copy(path("work"));
    }
    ~TemporaryHome() {
        reset_state();
        std::error_code ignored;
        for (auto place = std::filesystem::recursive_directory_iterator(root_, ignored);
             place != std::filesystem::recursive_directory_iterator(); place.increment(ignored))
            if (place->is_directory(ignored) && !place->is_symlink(ignored))
                ::chmod(place->path().c_str(), 0700);
        std::filesystem::remove_all(root_, ignored);
    }
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;

    const std::string &root() const { return root_; }
    // Below the home; also the Unix path, since no blank is in it.
    std::string path(const std::string &below) const { return root_ + "/" + below; }
    // As an HFS path.
    std::string mac(const std::string &below) const {
        std::string result = path(below).substr(1);
        for (char &c : result)
            c = c == '/' ? ':' : c;
        return result;
    }
    std::string preferences() const { return path("config/Quillon Preferences"); }

    std::string folder(const std::string &below) const {
        std::filesystem::create_directories(path(below));
        return path(below);
    }
    std::string file(const std::string &below, const std::string &contents = "x") const {
        const std::filesystem::path whole = path(below);
        std::filesystem::create_directories(whole.parent_path());
        std::ofstream(whole, std::ios::binary) << contents;
        return whole;
    }
    // A bundle whose program runs until it is ended and never comes to the bus.
    std::string silent_bundle(const std::string &below, const std::string &signature) const {
        const std::string contents = below + ".app/Contents/";
        file(contents + "PkgInfo", "APPL" + signature);
        const std::string name = std::filesystem::path(below).filename();
        const std::string program = file(contents + "Linux/" + name, "#!/bin/sh\nexec sleep 1000\n");
        ::chmod(program.c_str(), 0755);
        return path(below + ".app");
    }
    std::string read(const std::string &below) const {
        std::ifstream in(path(below), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    // Makes the preferences file and starts the settings.
    void preferences(const std::string &contents) const {
        file("config/Quillon Preferences", contents);
        check_config();
    }

  private:
    static void reset_state() {
        for (BoundedBuffer *const buffer :
             {static_cast<BoundedBuffer *>(&shortroot), static_cast<BoundedBuffer *>(&prefsFolder),
              static_cast<BoundedBuffer *>(&supportFolder), static_cast<BoundedBuffer *>(&curr_dir),
              static_cast<BoundedBuffer *>(&contentsFolder), static_cast<BoundedBuffer *>(&current_dvifile)})
            buffer->clear();
        home = nullptr;
        appvol = 0;
        appdir = 0;
        doDebug = doAlias = inBackground = 0;
        haveosx = 1;
        dataBaseSearch = 0;
        space_char = 202;
        havePrefs = 0;
        clearCache();
        for (char **&list : path_dirs)
            list = nullptr;
    }

    std::string root_;
};

// Runs BODY in a child: its result is the exit code.
inline int in_child(const std::function<int()> &body) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(body());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

// Runs BODY in a child as an ordinary user (as nobody when the tests run as root): its result is the exit
// code.
inline int as_ordinary_user(const std::function<int()> &body) {
    return in_child([&body] {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            return 99;
        return body();
    });
}

// Gives what lies at PATH to the user that as_ordinary_user becomes.
inline void give_away(const std::string &path) {
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    }
}

// A new string of the shell's, taken over; "(null)" for null.
inline std::string taken(char *text) {
    const std::string result = text ? text : "(null)";
    std::free(text);
    return result;
}

} // namespace quillon::test

#endif
