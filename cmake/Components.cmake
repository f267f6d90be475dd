# quarvelo_component(name dir): adds dir when the component is selected and the folder has
# a CMakeLists.txt, and records it so that tests/ and bench/ add their matching folders.
function(quarvelo_component_enabled name out)
  if("all" IN_LIST QUARVELO_COMPONENTS OR "${name}" IN_LIST QUARVELO_COMPONENTS)
    set(${out} TRUE PARENT_SCOPE)
  else()
    set(${out} FALSE PARENT_SCOPE)
  endif()
endfunction()

macro(quarvelo_component name dir)
  quarvelo_component_enabled(${name} _quarvelo_enabled)
  if(_quarvelo_enabled AND EXISTS ${PROJECT_SOURCE_DIR}/${dir}/CMakeLists.txt)
    add_subdirectory(${dir})
    set_property(GLOBAL APPEND PROPERTY QUARVELO_ENABLED_COMPONENTS ${name})
  endif()
endmacro()

# Adds ${CMAKE_CURRENT_SOURCE_DIR}/<name> for every enabled component that has such a folder.
function(quarvelo_add_component_subdirs)
  get_property(enabled GLOBAL PROPERTY QUARVELO_ENABLED_COMPONENTS)
  foreach(name IN LISTS enabled)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/CMakeLists.txt)
      add_subdirectory(${name})
    endif()
  endforeach()
endfunction()
