include(GNUInstallDirs)
set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/orvanto)
set(ICON_FOLDER ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
set(PROFILE_ICON application-x-orvanto-profile)
set(MADE_FOLDER ${PROJECT_BINARY_DIR}/packaging)

# A page for the browser where the converter is installed, else the Markdown.
find_program(CMARK_GFM cmark-gfm NO_CACHE)
if(CMARK_GFM)
    set(manual_name manual.html)
    set(maker packaging/linux/manual.cmake)
    set(template packaging/linux/manual.html.in)
    add_custom_command(OUTPUT ${MADE_FOLDER}/manual.html
        COMMAND ${CMAKE_COMMAND} -D CMARK_GFM=${CMARK_GFM} -D MARKDOWN=docs/manual.md -D TEMPLATE=${template}
            -D PAGE=${MADE_FOLDER}/manual.html -D PROJECT_VERSION=${PROJECT_VERSION} -P ${maker}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} DEPENDS docs/manual.md ${template} ${maker} VERBATIM)
    add_custom_target(manual DEPENDS ${MADE_FOLDER}/manual.html)
    add_dependencies(orvanto manual)
    install(FILES ${MADE_FOLDER}/manual.html DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
else()
    set(manual_name manual.md)
endif()

# install_made(NAME FOLDER AS): fills in the version and the like, and installs the result under another name. The place
# of the manual is known only when the prefix is: when it is installed.
function(install_made name folder as)
    set(MANUAL "@MANUAL@")
    configure_file(packaging/linux/${name}.in ${MADE_FOLDER}/${name}.in @ONLY)
    install(CODE "get_filename_component(prefix \"\${CMAKE_INSTALL_PREFIX}\" ABSOLUTE)
        set(MANUAL \"\${prefix}/${CMAKE_INSTALL_DOCDIR}/docs/${manual_name}\")
        configure_file(\"${MADE_FOLDER}/${name}.in\" \"${MADE_FOLDER}/${name}\" @ONLY)")
    install(FILES ${MADE_FOLDER}/${name} DESTINATION ${folder} RENAME ${as})
endfunction()

install(TARGETS orvanto)
install_made(orvanto.desktop ${CMAKE_INSTALL_DATADIR}/applications ${APPLICATION_ID}.desktop)
install_made(orvanto.metainfo.xml ${CMAKE_INSTALL_DATADIR}/metainfo ${APPLICATION_ID}.metainfo.xml)
install(FILES packaging/linux/orvanto.mime.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME ${APPLICATION_ID}.xml)
install_made(orvanto.1 ${CMAKE_INSTALL_MANDIR}/man1 orvanto.1)

foreach(size 16 32 48 64 128 256 512)
    install(FILES resources/icons/orvanto-${size}.png
        DESTINATION ${ICON_FOLDER}/${size}x${size}/apps RENAME ${APPLICATION_ID}.png)
    install(FILES resources/icons/orvanto-profile-${size}.png
        DESTINATION ${ICON_FOLDER}/${size}x${size}/mimetypes RENAME ${PROFILE_ICON}.png)
endforeach()
install(FILES resources/Logo-transparent.svg DESTINATION ${ICON_FOLDER}/scalable/apps RENAME ${APPLICATION_ID}.svg)
install(FILES resources/Profile.svg DESTINATION ${ICON_FOLDER}/scalable/mimetypes RENAME ${PROFILE_ICON}.svg)

# Folders stay folders there, so that the pages find each other and their pictures.
install(FILES README.md CONTRIBUTING.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES benchmarks/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/benchmarks)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})
