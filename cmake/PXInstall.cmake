# The installed tree: bin/, languages/ and settings/ together under the prefix, and in share/ what a
# desktop looks for. Two components: the viewer, and the default core with its settings, which a suite
# that brings its own does not need.
include_guard(GLOBAL)

# Where the screenshots of a release can be fetched. The name never resolves: whoever publishes the
# program has an address.
set(PX_HOMEPAGE "https://orvane.invalid/pxviewcerttool" CACHE STRING
    "Address below which docs/screenshots/ is served")

set(px_packaging "${PROJECT_SOURCE_DIR}/packaging")
set(px_metainfo invalid.orvane.pxviewcerttool.metainfo.xml)
configure_file("${px_packaging}/${px_metainfo}.in" "${PROJECT_BINARY_DIR}/packaging/${px_metainfo}" @ONLY)

install(TARGETS PXViewCertTool RUNTIME DESTINATION bin COMPONENT viewer)
install(PROGRAMS "${px_packaging}/PXViewCertTool-open" DESTINATION bin COMPONENT viewer)
install(FILES "${PROJECT_SOURCE_DIR}/languages/PXViewCertTool_Lang.ini"
    DESTINATION languages COMPONENT viewer)
install(FILES "${px_packaging}/PXViewCertTool.desktop"
    DESTINATION share/applications COMPONENT viewer)
install(FILES "${PROJECT_BINARY_DIR}/packaging/${px_metainfo}"
    DESTINATION share/metainfo COMPONENT viewer)
foreach(language "" zh_CN/ zh_TW/)
    install(FILES "${px_packaging}/man/${language}PXViewCertTool.1" "${px_packaging}/man/PXViewCertTool-open.1"
        DESTINATION "share/man/${language}man1" COMPONENT viewer)
endforeach()
foreach(size 16 24 32 48 64 128 256)
    install(FILES "${PROJECT_SOURCE_DIR}/app/img/icon/stamp-${size}.png"
        DESTINATION "share/icons/hicolor/${size}x${size}/apps" RENAME PXViewCertTool.png
        COMPONENT viewer)
endforeach()
install(FILES "${PROJECT_SOURCE_DIR}/app/img/icon/stamp.svg"
    DESTINATION share/icons/hicolor/scalable/apps RENAME PXViewCertTool.svg COMPONENT viewer)

# What a suite may bring itself, below the installed tree and the build tree alike: what lies there stays.
set(px_suite_files
    bin/PXSignatureCoreV10.so
    settings/CN/settings/PXClientConfig.dll
    settings/TW/settings/PXClientConfig.dll
    settings/EN/settings/PXClientConfig.dll)

# The viewer that loads the core has found the libraries already.
set_target_properties(PXSignatureCoreV10 PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
install(CODE "set(px_strip \"${CMAKE_STRIP}\")" COMPONENT core)
install(SCRIPT "${px_packaging}/install_unless_there.cmake" COMPONENT core)
foreach(file IN LISTS px_suite_files)
    install(CODE "px_install_unless_there(\"${PROJECT_BINARY_DIR}\" \"${file}\")" COMPONENT core)
endforeach()
