# SPDX-License-Identifier: GPL-3.0-or-later

# Warnings and hardening that every target of ours is built with.
add_library(vantiro_flags INTERFACE)
add_library(vantiro::flags ALIAS vantiro_flags)
target_compile_options(vantiro_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wformat=2 -Wnull-dereference -Wdouble-promotion -Wimplicit-fallthrough
    -fstack-protector-strong -fno-strict-aliasing)
target_compile_definitions(vantiro_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_JAVA_STYLE_ITERATORS
    $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_link_options(vantiro_flags INTERFACE -Wl,-z,relro,-z,now)
if(VANTIRO_WERROR)
    target_compile_options(vantiro_flags INTERFACE -Werror)
endif()
if(CMAKE_UNITY_BUILD)
    # GCC takes what several sources are gathered in for a header, where a class must not hold one of no linkage.
    target_compile_options(vantiro_flags INTERFACE -Wno-subobject-linkage)
endif()
if(VANTIRO_SANITIZE)
    target_compile_definitions(vantiro_flags INTERFACE VANTIRO_SANITIZED)
    target_compile_options(vantiro_flags INTERFACE -fsanitize=${VANTIRO_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(vantiro_flags INTERFACE -fsanitize=${VANTIRO_SANITIZE})
else()
    target_compile_definitions(vantiro_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()

# vantiro_library(NAME SOURCES ... HEADERS ... LINKS ...): one static library for one folder, known as vantiro::NAME.
# Headers are included from the project's root and checked to compile alone.
function(vantiro_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS")
    add_library(vantiro_${name} STATIC ${arg_SOURCES})
    add_library(vantiro::${name} ALIAS vantiro_${name})
    target_sources(vantiro_${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
    target_link_libraries(vantiro_${name} PUBLIC Qt6::Core ${arg_LINKS} PRIVATE vantiro::flags ${arg_PRIVATE_LINKS})
    if(VANTIRO_WERROR)
        set_target_properties(vantiro_${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()
