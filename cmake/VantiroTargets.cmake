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

# Parsing Qt and the standard library is half of what a source costs to compile: done once, where a build from nothing is
# what counts. A compiler cache does not get along with it.
#
# vantiro_precompiled(TARGET CARRIER): the target's sources begin with the headers of that carrier.
function(vantiro_precompiled target carrier)
    if(VANTIRO_PRECOMPILE)
        target_precompile_headers(${target} REUSE_FROM ${carrier})
        # PipeWire's headers come with it, and it must be the same for all who share the carrier.
        target_compile_definitions(${target} PRIVATE _REENTRANT)
    endif()
endfunction()

# vantiro_precompiled_carrier(NAME LINKS ... HEADERS ...): parses what all have in common, and the headers that are named.
function(vantiro_precompiled_carrier name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINKS;HEADERS")
    if(VANTIRO_PRECOMPILE)
        file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp "")
        add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
        target_link_libraries(${name} PRIVATE vantiro::flags Qt6::Core ${arg_LINKS})
        target_compile_definitions(${name} PRIVATE _REENTRANT)
        target_precompile_headers(${name} PRIVATE
            ${arg_HEADERS}
            <QCoreApplication> <QDateTime> <QDir> <QFile> <QJsonDocument> <QJsonObject> <QList> <QMap> <QObject>
            <QProcess> <QProperty> <QString>
            <algorithm> <atomic> <chrono> <expected> <functional> <map> <memory> <numbers> <optional> <random> <ranges>
            <span> <string> <thread> <variant> <vector>)
    endif()
endfunction()

# vantiro_library(NAME SOURCES ... HEADERS ... LINKS ...): one static library for one folder, known as vantiro::NAME.
# Headers are included from the project's root and checked to compile alone.
function(vantiro_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS")
    add_library(vantiro_${name} STATIC ${arg_SOURCES})
    add_library(vantiro::${name} ALIAS vantiro_${name})
    target_sources(vantiro_${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
    target_link_libraries(vantiro_${name} PUBLIC Qt6::Core ${arg_LINKS} PRIVATE vantiro::flags ${arg_PRIVATE_LINKS})
    vantiro_precompiled(vantiro_${name} vantiro_precompiled_library)
    if(VANTIRO_WERROR)
        set_target_properties(vantiro_${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()
