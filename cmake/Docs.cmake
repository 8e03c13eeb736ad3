# MVX2_BUILD_DOCS: the target docs, which makes the HTML pages in docs/html of the build out of the guides, the
# diagrams and the public headers' comments. A warning is an error.
find_package(Doxygen REQUIRED COMPONENTS dot)

set(docs_dir "${PROJECT_BINARY_DIR}/docs")
file(GLOB guides CONFIGURE_DEPENDS docs/*.md)
file(GLOB diagrams CONFIGURE_DEPENDS docs/diagrams/*.dot)

set(pictures "")
foreach(diagram IN LISTS diagrams)
  get_filename_component(name "${diagram}" NAME_WE)
  set(picture "${docs_dir}/${name}.svg")
  add_custom_command(
    OUTPUT "${picture}"
    COMMAND Doxygen::dot -Tsvg -o "${picture}" "${diagram}"
    DEPENDS "${diagram}"
    VERBATIM)
  list(APPEND pictures "${picture}")
endforeach()

list(JOIN pictures "\" \"" MVX2_DIAGRAMS)
set(MVX2_DIAGRAMS "\"${MVX2_DIAGRAMS}\"")
configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)

file(GLOB headers CONFIGURE_DEPENDS include/mvx2/*.h)
add_custom_command(
  OUTPUT "${docs_dir}/html/index.html"
  # What an earlier run left would be installed too.
  COMMAND ${CMAKE_COMMAND} -E rm -rf "${docs_dir}/html"
  COMMAND Doxygen::doxygen "${docs_dir}/Doxyfile"
  DEPENDS ${guides} ${pictures} ${headers} "${docs_dir}/Doxyfile" docs/footer.html docs/layout.xml docs/pictures.sed
          docs/style.css
  VERBATIM)
add_custom_target(docs ALL DEPENDS "${docs_dir}/html/index.html")

install(DIRECTORY "${docs_dir}/html" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
