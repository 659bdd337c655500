# Viewer targets: viewer_core (widget-free logic), viewer_gui (widgets, views), ZerlaneViewer (main.cpp).
# The project root is on the include path: code includes "camera/BufferData.h" and the like.
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)

include(${CMAKE_SOURCE_DIR}/cmake/ViewerCore.cmake)
include(${CMAKE_SOURCE_DIR}/cmake/ViewerGui.cmake)
include(${CMAKE_SOURCE_DIR}/cmake/ViewerApp.cmake)
