# viewer_gui: the viewer's widgets. Here the small ones shared by the panels; ViewerApp.cmake adds the
# program's threads, windows and panels, ViewerViews.cmake the OpenGL display.
add_library(viewer_gui STATIC
    ${CMAKE_SOURCE_DIR}/widgets/QHLine.cpp
    ${CMAKE_SOURCE_DIR}/widgets/TextColor.cpp
    ${CMAKE_SOURCE_DIR}/widgets/ZRComboBox.cpp
    ${CMAKE_SOURCE_DIR}/widgets/ZRDoubleSpinBox.cpp
    ${CMAKE_SOURCE_DIR}/widgets/ZRMessageBox.cpp
    ${CMAKE_SOURCE_DIR}/widgets/ZRSpinBox.cpp
)
target_link_libraries(viewer_gui PUBLIC viewer_core Qt6::Widgets)
set_target_properties(viewer_gui PROPERTIES AUTOMOC ON)
