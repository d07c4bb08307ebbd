# `cpack -G DEB`: the installed tree as /usr/lib/orvane, in two packages as there are two components.
include_guard(GLOBAL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pxviewcerttool)
set(CPACK_PACKAGE_VENDOR "PXViewCertTool developers")
set(CPACK_PACKAGE_CONTACT "PXViewCertTool developers <pxviewcerttool@orvane.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/lib/orvane)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${px_packaging}/debian/finish_tree.cmake")
set(CPACK_COMPONENTS_ALL viewer core)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_VIEWER_PACKAGE_NAME pxviewcerttool)
set(CPACK_DEBIAN_VIEWER_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_VIEWER_PACKAGE_RECOMMENDS
    "pxviewcerttool-core, fonts-noto-cjk | fonts-wqy-microhei")
set(CPACK_DEBIAN_VIEWER_DESCRIPTION "viewer for X.509 certificates
Opens a certificate file, in binary (DER) or text form (PEM), in a window
that says whether the certificate is valid now, whom it was issued to and
by whom, and lists every field and extension with its full value.
.
The texts are in Simplified Chinese, Traditional Chinese and English.")

# Not needed beside a suite that brings a core of its own; what such a suite put there stays.
set(CPACK_DEBIAN_CORE_PACKAGE_NAME pxviewcerttool-core)
set(CPACK_DEBIAN_CORE_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_CORE_PACKAGE_ENHANCES pxviewcerttool)
set(CPACK_DEBIAN_CORE_DESCRIPTION "default signature core of the certificate viewer
Tells the certificate viewer where its texts lie and which language to use,
on a machine where no suite of signing tools is installed.
.
A suite's own signature core or configuration that lies in its place is kept,
and is still there after this package was removed.")
set(px_scripts "${PROJECT_BINARY_DIR}/packaging/debian")
foreach(script preinst prerm)
    configure_file("${px_packaging}/debian/put_aside.sh" "${px_scripts}/${script}" COPYONLY)
endforeach()
foreach(script postinst postrm)
    configure_file("${px_packaging}/debian/put_back.sh" "${px_scripts}/${script}" COPYONLY)
endforeach()
set(CPACK_DEBIAN_CORE_PACKAGE_CONTROL_EXTRA
    "${px_scripts}/preinst" "${px_scripts}/postinst" "${px_scripts}/prerm" "${px_scripts}/postrm")

include(CPack)
