# SPDX-License-Identifier: GPL-3.0-or-later
# The presets read this file at project(): compilations go through ccache where it is installed. Builds without a preset,
# such as a distribution's, choose for themselves.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(VANTIRO_CCACHE ccache)
    mark_as_advanced(VANTIRO_CCACHE)
    if(VANTIRO_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${VANTIRO_CCACHE})
    endif()
endif()
