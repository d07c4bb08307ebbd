# Between the install step and the packing: what a desktop and a shell look for moves from the tree to
# where they look, the default core and its settings to where no suite has its own, and the documents
# that a distribution asks for join them.
set(packaging "${CMAKE_CURRENT_LIST_DIR}")
set(usr "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(tree "${usr}/lib/orvane")
find_program(gzip gzip REQUIRED)

function(compress file)
    execute_process(COMMAND "${gzip}" -9n "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(RENAME "${tree}/share" "${usr}/share")
file(MAKE_DIRECTORY "${usr}/bin" "${tree}/default/bin")
foreach(program PXViewCertTool PXViewCertTool-open)
    file(CREATE_LINK "../lib/orvane/bin/${program}" "${usr}/bin/${program}" SYMBOLIC)
endforeach()
foreach(part bin/PXSignatureCoreV10.so settings)
    file(RENAME "${tree}/${part}" "${tree}/default/${part}")
endforeach()

file(GLOB manuals "${usr}/share/man/man1/*.1" "${usr}/share/man/*/man1/*.1")
foreach(manual IN LISTS manuals)
    compress("${manual}")
endforeach()
set(documents "${usr}/share/doc/pxviewcerttool")
file(COPY "${packaging}/debian/copyright" "${packaging}/debian/changelog" DESTINATION "${documents}"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
compress("${documents}/changelog")

# Whatever the umask of who packs.
file(CHMOD_RECURSE "${usr}" DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
