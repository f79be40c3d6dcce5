// A front for tests: keeps what is printed, answers choosers with what the test says, and turns the wait for
// ever after a serious error into an exception.
#ifndef QUILLON_TESTS_SUPPORT_RECORDING_FRONT_H
#define QUILLON_TESTS_SUPPORT_RECORDING_FRONT_H

#include <algorithm>
#include <string>
#include <vector>

#include "console/window.h"
#include "front/dialogs.h"
#include "front/front.h"
#include "headless/headless.h"
#include "state/job_state.h"

namespace quillon::test {

// Thrown where the shell would wait for a person to quit.
struct Waited {};

class RecordingFront {
  public:
    RecordingFront() {
        record() = {};
        before_ = front;
        recording() = headless_front;
        recording().text_appended = [](const void *data, std::size_t size) {
            std::string bytes(static_cast<const char *>(data), size);
            std::replace(bytes.begin(), bytes.end(), '\r', '\n');
            record().printed += bytes;
        };
        recording().idle = []() -> int { throw Waited{}; };
        recording().run_dialog = [](Dialog *dialog) {
            record().windows.push_back(dialog->name);
            record().ended = 0;
            if (record().fills)
                record().fills(dialog);
            hit_control(dialog, record().pressed);
            // What OK refuses is cancelled.
            if (!record().ended)
                hit_control(dialog, 2);
        };
        recording().end_dialog = [](Dialog *) { record().ended = 1; };
        recording().navigate = [](const NavRequest *request, BoundedBuffer &path) {
            record().asked = 1;
            record().kind = request->kind;
            record().prompt = request->prompt ? request->prompt : "";
            record().start_folder = request->start_folder ? request->start_folder : "(null)";
            record().start_name = request->start_name ? request->start_name : "(null)";
            record().initial_filter = request->initial_filter;
            record().filters.clear();
            for (int i = 0; i < request->filter_count; i++)
                record().filters.push_back(request->filters[i].text.c_str());
            if (record().meanwhile)
                record().meanwhile(*request);
            return record().answer.empty() ? 0 : path.copy(record().answer);
        };
        front = &recording();
        SetUpTextWindow("test", 1);
    }
    ~RecordingFront() {
        Finalize();
        front = before_;
    }
    RecordingFront(const RecordingFront &) = delete;
    RecordingFront &operator=(const RecordingFront &) = delete;

    struct Record {
        std::string printed;
        std::vector<std::string> windows;
        std::int16_t pressed = 1;                  // the button that closes a window
        int ended = 0;                             // 1 once the window was closed
        void (*fills)(DialogRef window) = nullptr; // fills the window's controls
        // Choosers.
        std::string answer; // the path chosen, empty: cancelled
        void (*meanwhile)(const NavRequest &request) = nullptr;
        int asked = 0;
        NavKind kind = navGetFile;
        std::string prompt, start_folder, start_name;
        std::vector<std::string> filters;
        int initial_filter = -1;
    };
    static Record &record() {
        static Record instance;
        return instance;
    }
    Record *operator->() const { return &record(); }

  private:
    static Front &recording() {
        static Front instance = {};
        return instance;
    }
    const Front *before_ = nullptr;
};

} // namespace quillon::test

#endif
