#include "helpers/dvi_viewer.h"

#include "common/bundle.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "helpers/application.h"
#include "helpers/viewer.h"

namespace helpers {

bool show_dvi(const std::string &document, Showing &showing, std::string &problem) {
    // This program and the commands lie in different bundles of the same folder.
    const std::string home = common::above_own_program(4);
    const std::string chosen =
        common::expand_setting_path(common::setting("DVIPREVIEW"), home, common::space_byte());
    const common::Application viewer = find_application(chosen.empty() ? "xdvi" : chosen);
    if (viewer.kind == common::Kind::none && chosen.empty())
        problem =
            "there is no viewer for DVI files. Install texlive-binaries, which has xdvi, or choose one with "
            "Options > Set Applications...";
    else if (viewer.kind == common::Kind::none)
        problem = "I can't find the DVI previewer " + chosen;
    else if (viewer.kind == common::Kind::bundle &&
             common::signature_of_bundle(viewer.path) == dviview_signature)
        problem = "the DVI previewer that is chosen is dviview itself; choose the viewer that it is to start";
    else
        return show_document(viewer, document, showing, problem);
    return false;
}

} // namespace helpers
