# px_install_unless_there(<tree> <file>), for the install step: as install(FILES) of <tree>/<file> to
# the same place below the prefix, but what lies there already stays, a link that leads nowhere
# included. px_strip is the strip program.
# A macro, for file(INSTALL) notes in its caller's scope what it installed.
macro(px_install_unless_there tree file)
    set(px_there "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${file}")
    if(EXISTS "${px_there}" OR IS_SYMLINK "${px_there}")
        message(STATUS "Kept: ${px_there}")
    else()
        get_filename_component(px_folder "${file}" DIRECTORY)
        file(INSTALL "${tree}/${file}" DESTINATION "${CMAKE_INSTALL_PREFIX}/${px_folder}")
        if(CMAKE_INSTALL_DO_STRIP AND "${file}" MATCHES "\\.so$")
            execute_process(COMMAND "${px_strip}" "${px_there}" COMMAND_ERROR_IS_FATAL ANY)
        endif()
    endif()
endmacro()
