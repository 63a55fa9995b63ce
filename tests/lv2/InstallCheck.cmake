# Installs the plugin's component into a fresh prefix and asks lilv's lv2ls, searching only
# there, whether a host would find the plugin.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} --component lv2
                RESULT_VARIABLE installed OUTPUT_QUIET)
if(NOT installed EQUAL 0)
  message(FATAL_ERROR "cmake --install failed")
endif()
foreach(file vocato.so manifest.ttl vocato.ttl)
  if(NOT EXISTS ${PREFIX}/${LIBDIR}/lv2/vocato.lv2/${file})
    message(FATAL_ERROR "${file} is not in ${PREFIX}/${LIBDIR}/lv2/vocato.lv2")
  endif()
endforeach()
set(ENV{LV2_PATH} ${PREFIX}/${LIBDIR}/lv2)
execute_process(COMMAND lv2ls OUTPUT_VARIABLE plugins)
file(REMOVE_RECURSE ${PREFIX})
if(NOT plugins STREQUAL "${URI}\n")
  message(FATAL_ERROR "lv2ls over the installed bundle lists '${plugins}'")
endif()
