# kestrel_public_header(FILE CLASS...)
#
# Declares a public header of the current source folder and the classes that it offers. Each class
# gets a forwarding header, <Kestrel/CLASS>, for the build tree and for the installed tree.
function(kestrel_public_header file)
  cmake_path(ABSOLUTE_PATH file NORMALIZE OUTPUT_VARIABLE path)
  cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${PROJECT_SOURCE_DIR}/src OUTPUT_VARIABLE relative)
  cmake_path(GET relative PARENT_PATH folder)
  # Without the place of the tree, so that a compiler cache serves several of them.
  cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${PROJECT_BINARY_DIR}/include/Kestrel
             OUTPUT_VARIABLE from_build)
  install(FILES ${path} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Kestrel/${folder})
  set_property(GLOBAL APPEND PROPERTY KESTREL_PUBLIC_HEADERS ${relative})
  foreach(class IN LISTS ARGN)
    set(installed ${PROJECT_BINARY_DIR}/forwarding/${class})
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/Kestrel/${class}
         CONTENT "#include \"@from_build@\"\n" @ONLY)
    file(CONFIGURE OUTPUT ${installed} CONTENT "#include \"@relative@\"\n" @ONLY)
    install(FILES ${installed} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Kestrel)
    set_property(GLOBAL APPEND PROPERTY KESTREL_PUBLIC_CLASSES ${class})
    set_property(GLOBAL PROPERTY KESTREL_HEADER_${class} ${relative})
  endforeach()
endfunction()
