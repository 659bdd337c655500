# The OpenGL view of one buffer and its helpers, in viewer_gui.
target_sources(viewer_gui PRIVATE
    ${CMAKE_SOURCE_DIR}/views/AxisMesh.cpp
    ${CMAKE_SOURCE_DIR}/views/BufferTexture.cpp
    ${CMAKE_SOURCE_DIR}/views/DisplayWidget.cpp
    ${CMAKE_SOURCE_DIR}/views/SceneRenderer.cpp
    ${CMAKE_SOURCE_DIR}/views/TriangleTable.cpp
    ${CMAKE_SOURCE_DIR}/views/ViewCamera.cpp
)
