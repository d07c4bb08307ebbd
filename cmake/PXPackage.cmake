# `cpack -G DEB` and `cpack -G RPM`: the installed tree as /usr/lib/orvane, in one package that works alone.
include_guard(GLOBAL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pxviewcerttool)
set(CPACK_PACKAGE_VENDOR "PXViewCertTool developers")
set(CPACK_PACKAGE_CONTACT "PXViewCertTool developers <pxviewcerttool@orvane.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "viewer for X.509 certificates")
set(CPACK_PACKAGE_DESCRIPTION
"Opens a certificate file, in binary (DER) or text form (PEM), in a window
that says whether the certificate is valid now, whom it was issued to and
by whom, and lists every field and extension with its full value.

The texts are in Simplified Chinese, Traditional Chinese and English.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/lib/orvane)
set(CPACK_STRIP_FILES ON)
# By name, for the list of what was installed by hand, by root perhaps, is that of no component.
foreach(component viewer core)
    list(APPEND CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR}" "${PROJECT_NAME}" ${component} /)
endforeach()
set(CPACK_PRE_BUILD_SCRIPTS "${px_packaging}/finish_tree.cmake")

# The default core comes along as pxviewcerttool-core and gives way to a suite's, whose package may
# stand in for it: it provides the second name.
set(px_core pxviewcerttool-core)
set(px_core_provider pxviewcerttool-core-provider)
set(px_place "${px_packaging}/default_core_place.sh")
set(px_take "${px_packaging}/default_core_take.sh")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${px_core} | ${px_core_provider}")
set(CPACK_DEBIAN_PACKAGE_PROVIDES "${px_core} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk | fonts-wqy-microhei")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(px_control "${PROJECT_BINARY_DIR}/packaging/debian")
configure_file("${px_place}" "${px_control}/postinst" COPYONLY)
configure_file("${px_take}" "${px_control}/prerm" COPYONLY)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${px_control}/postinst" "${px_control}/prerm" "${px_packaging}/debian/triggers")

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "All rights reserved")
set(CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_RPM_PACKAGE_RELOCATABLE OFF)
set(CPACK_RPM_PACKAGE_REQUIRES "(${px_core} or ${px_core_provider}), diffutils")
set(CPACK_RPM_PACKAGE_PROVIDES "${px_core} = ${PROJECT_VERSION}")
# The tree as it is: nothing stripped again, no links from build identifiers, and the folders of the
# desktop's own are not this package's.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define __os_install_post %{nil}\n%define _build_id_links none")
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/share/applications /usr/share/metainfo /usr/share/man /usr/share/man/man1
    /usr/share/icons /usr/share/icons/hicolor)
foreach(language zh_CN zh_TW)
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
        "/usr/share/man/${language}" "/usr/share/man/${language}/man1")
endforeach()
foreach(size 16x16 24x24 32x32 48x48 64x64 128x128 256x256 scalable)
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
        "/usr/share/icons/hicolor/${size}" "/usr/share/icons/hicolor/${size}/apps")
endforeach()
set(CPACK_RPM_PRE_INSTALL_SCRIPT_FILE "${px_take}")
set(CPACK_RPM_POST_INSTALL_SCRIPT_FILE "${px_place}")
set(CPACK_RPM_PRE_UNINSTALL_SCRIPT_FILE "${px_take}")

include(CPack)
