# Lays the bundles of APPS out in HOME. Each is a copy of its folder, a link to the host under the tool's name, and
# for the engines the texmf folder that all of them share.
file(GLOB bundles ${APPS}/*.app)
foreach(bundle ${bundles})
  get_filename_component(leaf ${bundle} NAME)
  string(REGEX REPLACE "\\.app$" "" tool ${leaf})
  set(contents ${HOME}/${leaf}/Contents)
  # Nothing stays of what an earlier build had there.
  file(REMOVE_RECURSE ${contents}/Resources)
  file(COPY ${bundle} DESTINATION ${HOME})
  file(MAKE_DIRECTORY ${contents}/Linux)
  # These two have programs of their own.
  if(NOT tool MATCHES "^(setpaths|dviview)$")
    file(CREATE_LINK ../../../Quillon.app/Contents/Linux/quillon-toolhost ${contents}/Linux/${tool} SYMBOLIC)
  endif()
  if(tool MATCHES "^(pdf)?e?tex$")
    file(COPY ${APPS}/texmf DESTINATION ${contents}/Resources)
  endif()
endforeach()
