# The running program: event thread, worker, main window, device tree, info panel, view area
# (all in viewer_gui), the icons, and the ZerlaneViewer executable (app/main.cpp only).
target_sources(viewer_gui PRIVATE
    app/CommandLine.cpp
    app/ViewerApplication.cpp
    app/ViewerMain.cpp
    app/Wiring.cpp
    events/AudioWaveform.cpp
    events/CameraManager.cpp
    events/ZerlaneThread.cpp
    info/InfoWidget.cpp
    mainwindow/RecordingThread.cpp
    mainwindow/ZerlaneViewer.cpp
    mainwindow/ZerlaneViewer.ui
    tree/DeviceTreeModel.cpp
    tree/DeviceTreeView.cpp
    views/BaseBufferDisplayWidget.h
    views/BufferDisplayWidget.cpp
    views/BufferDisplayWidget.ui
    views/BufferSubWindow.cpp
    views/MdiArea.cpp
    views/PixelReadout.cpp
    widgets/AboutDialog.cpp
    widgets/AboutDialog.ui
    worker/WorkingThread.cpp
)
# The OpenGL display of a buffer.
include(${CMAKE_SOURCE_DIR}/cmake/ViewerViews.cmake)
target_link_libraries(viewer_gui PUBLIC Qt6::Widgets Qt6::OpenGL Qt6::OpenGLWidgets OpenGL::GL)

# Icons and logos, drawn by tools/icongen. Added through the target so that the static library's
# resources are linked into every program that uses it.
file(GLOB viewer_images RELATIVE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/resources/images/*.png)
qt_add_resources(viewer_gui "images" PREFIX "/" BASE resources FILES ${viewer_images})

add_executable(ZerlaneViewer app/main.cpp)
target_link_libraries(ZerlaneViewer PRIVATE viewer_gui)
install(TARGETS ZerlaneViewer RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_SOURCE_DIR}/resources/zerlane-viewer.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/resources/images/zr32.png DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/32x32/apps
        RENAME zerlane-viewer.png)
