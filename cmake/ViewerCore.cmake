# viewer_core: everything of the viewer that needs no widgets (records, buffers, text utilities,
# palettes, settings, postponed calls), with the built-in palette files as resources.
set(viewer_core_sources
    app/StartupOptions.cpp
    app/TextUtils.cpp
    app/ViewerLog.cpp
    app/YuvConverter.cpp
    camera/AudioNodeData.cpp
    camera/BufferData.cpp
    camera/ColorNodeData.cpp
    camera/DepthNodeData.cpp
    camera/DeviceData.cpp
    camera/DeviceNodeBufferData.cpp
    camera/DisplayImage.cpp
    camera/NodeData.cpp
    camera/RecordUtils.cpp
    camera/RefCounted.cpp
    camera/StandardDeviationHistory.cpp
    info/InfoWidgetSetWidgetEvent.cpp
    palettes/DepthColorizer.cpp
    palettes/DepthPalette.cpp
    worker/PostponedCalls.cpp
    worker/Settings.cpp
)
list(TRANSFORM viewer_core_sources PREPEND ${CMAKE_SOURCE_DIR}/)
add_library(viewer_core STATIC ${viewer_core_sources})
target_include_directories(viewer_core PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(viewer_core PUBLIC Qt6::Core Qt6::Gui Qt6::Xml Zerlane)
set_target_properties(viewer_core PROPERTIES AUTOMOC ON)

# Stored uncompressed; the static library's resources are linked into whatever uses it.
qt_add_resources(viewer_core "palettes"
    PREFIX "/palettes"
    BASE ${CMAKE_SOURCE_DIR}/resources/palettes
    OPTIONS --no-compress
    FILES
        ${CMAKE_SOURCE_DIR}/resources/palettes/palette.xml
        ${CMAKE_SOURCE_DIR}/resources/palettes/closepalette.xml
)
