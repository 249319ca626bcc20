# Every target of ours links this one: warnings, sanitizers and the switches that keep text conversions explicit.
add_library(ferrow_options INTERFACE)
target_include_directories(ferrow_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(ferrow_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                       -Wcast-align -Wimplicit-fallthrough
                       # Designated initializers leave members to their defaults on purpose.
                       -Wno-missing-field-initializers)
target_compile_definitions(ferrow_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
                           QT_NO_FOREACH _FILE_OFFSET_BITS=64)
# Rooms name the libraries that any of their parts calls. Each program loads those that it calls itself: loading all of
# them would take longer than framing a small photo.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,--as-needed FERROW_HAS_AS_NEEDED)
if(FERROW_HAS_AS_NEEDED)
    target_link_options(ferrow_options INTERFACE -Wl,--as-needed)
endif()
if(FERROW_WARNINGS_AS_ERRORS)
    target_compile_options(ferrow_options INTERFACE -Werror)
endif()
if(FERROW_SANITIZE)
    target_compile_options(ferrow_options INTERFACE -fsanitize=${FERROW_SANITIZE} -fno-sanitize-recover=all
                           -fno-omit-frame-pointer)
    target_link_options(ferrow_options INTERFACE -fsanitize=${FERROW_SANITIZE})
endif()
# What users run is hardened: a damaged stack or a copy beyond its target ends the process, and nothing that calls go
# through can be written once it runs. Sanitizers watch all that themselves.
if(NOT FERROW_SANITIZE)
    # Qt asks for position-independent code itself.
    target_compile_options(ferrow_options INTERFACE
                           "$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    target_link_options(ferrow_options INTERFACE -pie -Wl,-z,relro -Wl,-z,now)
endif()
if(FERROW_FUZZ)
    # The rooms count the edges that an input reaches; only the targets bring the loop that makes inputs.
    target_compile_options(ferrow_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(ferrow_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# ferrow_room(Name [MOC] SOURCES ... LINKS ...): a static library for one room, reached by others as Ferrow::Name. Its link
# line is the list of rooms that it may include from: tests/Includes checks that. MOC is for rooms with signals.
function(ferrow_room name)
    cmake_parse_arguments(ROOM "MOC" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(Ferrow${name} STATIC ${ROOM_SOURCES})
    add_library(Ferrow::${name} ALIAS Ferrow${name})
    target_link_libraries(Ferrow${name} PUBLIC ferrow_options ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
    if(ROOM_MOC)
        set_target_properties(Ferrow${name} PROPERTIES AUTOMOC ON AUTOGEN_ORIGIN_DEPENDS OFF)
    endif()
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
    string(JOIN " " room "${name}" "${folder}" ${ROOM_SOURCES} LINKS ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
    set_property(GLOBAL APPEND_STRING PROPERTY FERROW_ROOMS "${room}\n")
endfunction()

# ferrow_tests(Name SOURCES ... LINKS ...): one GoogleTest program, registered with ctest under its name.
function(ferrow_tests name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/Support/Main.cpp)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ferrow_options GTest::gmock Qt6::Gui Ferrow::Engine ${TEST_LINKS})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
