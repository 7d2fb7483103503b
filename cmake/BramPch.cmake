# SPDX-License-Identifier: Apache-2.0
# Precompiled headers: most of the time of a build goes into the same few library headers. Three
# sets serve everybody: the rooms, the rooms with widgets, and the tests. Only headers of libraries
# stand in them, so that a change of ours never rebuilds one.
option(BRAM_PCH "Use precompiled headers" ON)

set(BRAM_PCH_CORE
    <QByteArray> <QDateTime> <QDebug> <QDir> <QFile> <QHash> <QJsonArray> <QJsonDocument> <QJsonObject> <QList>
    <QMap> <QObject> <QPointer> <QSet> <QString> <QStringList> <QTimer> <QUrl> <algorithm> <array> <chrono>
    <expected> <functional> <memory> <optional> <string> <utility> <vector>)

# A target that builds the set and that others take it from. It is of their kind, LIBRARY or EXECUTABLE, because
# the two are compiled with different options.
function(bram_pch_set name kind libraries headers)
    if(NOT BRAM_PCH)
        return()
    endif()
    if(kind STREQUAL "LIBRARY")
        add_library(bram_pch_${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/pch.cpp)
    else()
        add_executable(bram_pch_${name} ${PROJECT_SOURCE_DIR}/cmake/pch.cpp)
    endif()
    target_link_libraries(bram_pch_${name} PRIVATE bram_options ${libraries})
    target_precompile_headers(bram_pch_${name} PRIVATE ${headers})
endfunction()

function(bram_use_pch target name)
    if(BRAM_PCH)
        target_precompile_headers(${target} REUSE_FROM bram_pch_${name})
    endif()
endfunction()
