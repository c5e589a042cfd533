set_target_properties(orvanto PROPERTIES
    OUTPUT_NAME Orvanto
    MACOSX_BUNDLE ON
    MACOSX_BUNDLE_INFO_PLIST ${CMAKE_CURRENT_LIST_DIR}/Info.plist.in)

# iconutil wants a folder with each size at 1x and 2x under names of its own.
foreach(icon orvanto orvanto-profile)
    set(iconset ${PROJECT_BINARY_DIR}/${icon}.iconset)
    set(made ${PROJECT_BINARY_DIR}/${icon}.icns)
    foreach(size 16 32 128 256)
        math(EXPR double "2 * ${size}")
        configure_file(resources/icons/${icon}-${size}.png ${iconset}/icon_${size}x${size}.png COPYONLY)
        configure_file(resources/icons/${icon}-${double}.png ${iconset}/icon_${size}x${size}@2x.png COPYONLY)
    endforeach()
    configure_file(resources/icons/${icon}-512.png ${iconset}/icon_512x512.png COPYONLY)
    add_custom_command(OUTPUT ${made} COMMAND iconutil --convert icns --output ${made} ${iconset} VERBATIM)
    target_sources(orvanto PRIVATE ${made})
    set_source_files_properties(${made} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
endforeach()

install(TARGETS orvanto BUNDLE DESTINATION .)
