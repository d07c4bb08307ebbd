# Between the install step and the packing of the Debian packages: what a desktop and a shell look for
# moves from the tree to where they look, and the documents that Debian asks for join it.
set(debian "${CMAKE_CURRENT_LIST_DIR}")
set(viewer "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/viewer/usr")
set(core "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/core/usr")
find_program(gzip gzip REQUIRED)

function(compress file)
    execute_process(COMMAND "${gzip}" -9n "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(add_documents folder)
    file(COPY "${debian}/copyright" "${debian}/changelog" DESTINATION "${folder}"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    compress("${folder}/changelog")
endfunction()

file(RENAME "${viewer}/lib/orvane/share" "${viewer}/share")
file(MAKE_DIRECTORY "${viewer}/bin")
foreach(program PXViewCertTool PXViewCertTool-open)
    file(CREATE_LINK "../lib/orvane/bin/${program}" "${viewer}/bin/${program}" SYMBOLIC)
endforeach()
compress("${viewer}/share/man/man1/PXViewCertTool.1")
file(CREATE_LINK PXViewCertTool.1.gz "${viewer}/share/man/man1/PXViewCertTool-open.1.gz" SYMBOLIC)
add_documents("${viewer}/share/doc/pxviewcerttool")
add_documents("${core}/share/doc/pxviewcerttool-core")

# Whatever the umask of who packs.
file(CHMOD_RECURSE "${viewer}" "${core}" DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
