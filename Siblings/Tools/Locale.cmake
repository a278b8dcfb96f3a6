# The message catalogues: Locale/<language>.po becomes <bin>/locale/<language>/LC_MESSAGES/rondel.mo, beside the library
# that reads it. msgfmt refuses a translation whose placeholders differ from those of its original.
find_program(RONDEL_MSGFMT msgfmt REQUIRED)
file(GLOB RONDEL_PO_FILES CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/Locale/*.po")
set(RONDEL_MO_FILES)
foreach(PO_FILE ${RONDEL_PO_FILES})
    get_filename_component(PO_LANGUAGE "${PO_FILE}" NAME_WE)
    set(MO_FOLDER "${RONDEL_BIN_DIR}/locale/${PO_LANGUAGE}/LC_MESSAGES")
    add_custom_command(OUTPUT "${MO_FOLDER}/rondel.mo"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${MO_FOLDER}"
        COMMAND "${RONDEL_MSGFMT}" -c -o "${MO_FOLDER}/rondel.mo" "${PO_FILE}"
        DEPENDS "${PO_FILE}" VERBATIM)
    list(APPEND RONDEL_MO_FILES "${MO_FOLDER}/rondel.mo")
endforeach()
add_custom_target(RondelLocale ALL DEPENDS ${RONDEL_MO_FILES})
add_dependencies(libLyTools RondelLocale)
