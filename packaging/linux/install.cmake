include(GNUInstallDirs)
set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/orvanto)
set(ICON_FOLDER ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
set(PROFILE_ICON application-x-orvanto-profile)
set(MADE_FOLDER ${PROJECT_BINARY_DIR}/packaging)

# install_made(NAME FOLDER AS): fills in the version and the like, and installs the result under another name.
function(install_made name folder as)
    configure_file(packaging/linux/${name}.in ${MADE_FOLDER}/${name} @ONLY)
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
