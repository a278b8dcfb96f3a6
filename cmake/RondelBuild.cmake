# How every target of the tree is compiled, and the few shapes that targets come in.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Nothing leaves a library but what it exports by name (LY_EXPORT).
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(RONDEL_CCACHE ccache)
if(RONDEL_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${RONDEL_CCACHE})
endif()
find_package(Threads REQUIRED)

# Plug-in, siblings and host come out in one folder, where they look for each other.
set(RONDEL_BIN_DIR "${CMAKE_BINARY_DIR}/bin")

add_library(RondelFlags INTERFACE)
target_compile_options(RondelFlags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # The layout's arithmetic happens in the order in which it is written.
    -ffp-contract=off)
# A GNU unique symbol (an inline variable of the standard library will do) keeps a library mapped for ever.
target_compile_options(RondelFlags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
# The lock annotations of GlobalMacros.h.
target_compile_options(RondelFlags INTERFACE $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>)
# Some three hundred programs are linked for the sanitizers: the quicker linker, where there is one.
find_program(RONDEL_LLD ld.lld)
if(RONDEL_SANITIZE AND RONDEL_LLD)
    add_link_options(-fuse-ld=lld)
endif()
if(RONDEL_SANITIZE)
    target_compile_options(RondelFlags INTERFACE -fsanitize=${RONDEL_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    # In instrumented code g++ 12 warns of uses that are none. The builds without sanitizers judge the warnings.
    target_compile_options(RondelFlags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-error>)
    # A player, a tools library or a disc service may hand in a plain table of functions, with no type information of
    # this compiler in front of it. The check of virtual tables would take every such object for a broken one.
    target_compile_options(RondelFlags INTERFACE -fno-sanitize=vptr)
    string(REPLACE ",fuzzer-no-link" "" RONDEL_SANITIZE_LINK "${RONDEL_SANITIZE}")
    target_link_options(RondelFlags INTERFACE -fsanitize=${RONDEL_SANITIZE_LINK})
endif()
if(RONDEL_COVERAGE)
    target_compile_options(RondelFlags INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(RondelFlags INTERFACE --coverage)
endif()
target_link_libraries(RondelFlags INTERFACE Threads::Threads)
# A header is included by its bare name: every directory of the layout is on the include path.
target_include_directories(RondelFlags INTERFACE
    "${PROJECT_SOURCE_DIR}"
    "${PROJECT_SOURCE_DIR}/SharedFiles"
    "${PROJECT_SOURCE_DIR}/LyTools"
    "${PROJECT_SOURCE_DIR}/LyCoreLib"
    "${PROJECT_SOURCE_DIR}/LyCoreLib/App"
    "${PROJECT_SOURCE_DIR}/LyCoreLib/Media"
    "${PROJECT_SOURCE_DIR}/LyCoreLib/Platform"
    "${PROJECT_SOURCE_DIR}/Disc/Drive"
    "${PROJECT_SOURCE_DIR}/Disc/Checksums"
    "${PROJECT_SOURCE_DIR}/Disc/RipperLib"
    "${PROJECT_SOURCE_DIR}/Plugins/Input/CDA"
    "${PROJECT_SOURCE_DIR}/Siblings/Disc"
    "${PROJECT_SOURCE_DIR}/Siblings/Tools"
    "${PROJECT_SOURCE_DIR}/Siblings/Reader")

# rondel_library(NAME dependency...): the directory's sources as a static library. Every .cpp file of the directory
# belongs to it, so that no file can be forgotten. A directory that holds only headers becomes an interface.
function(rondel_library NAME)
    file(GLOB SOURCES CONFIGURE_DEPENDS *.cpp)
    if(SOURCES)
        add_library(${NAME} STATIC ${SOURCES})
        target_link_libraries(${NAME} PUBLIC RondelFlags ${ARGN})
    else()
        add_library(${NAME} INTERFACE)
        target_link_libraries(${NAME} INTERFACE RondelFlags ${ARGN})
    endif()
endfunction()

# rondel_module(TARGET FILE EXPORTS STATIC_LIBRARY dependency...): a loadable library of the given file name that holds
# all of STATIC_LIBRARY and exports only what the version script EXPORTS names.
function(rondel_module TARGET FILE_NAME EXPORTS WHOLE)
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${TARGET}.cpp" "// Everything stands in the static library.\n")
    add_library(${TARGET} MODULE "${CMAKE_CURRENT_BINARY_DIR}/${TARGET}.cpp")
    get_filename_component(STEM "${FILE_NAME}" NAME_WLE)
    get_filename_component(SUFFIX "${FILE_NAME}" LAST_EXT)
    set_target_properties(${TARGET} PROPERTIES PREFIX "" OUTPUT_NAME "${STEM}" SUFFIX "${SUFFIX}"
        LIBRARY_OUTPUT_DIRECTORY "${RONDEL_BIN_DIR}" LINK_DEPENDS "${EXPORTS}")
    target_link_libraries(${TARGET} PRIVATE RondelFlags "$<LINK_LIBRARY:WHOLE_ARCHIVE,${WHOLE}>" ${ARGN})
    target_link_options(${TARGET} PRIVATE "-Wl,--version-script=${EXPORTS}" -Wl,--no-undefined)
    if(RONDEL_SANITIZE)
        # The sanitizer's run-time comes with the host program.
        target_link_options(${TARGET} PRIVATE -Wl,-z,undefs)
    endif()
endfunction()
