# Where the parts of a show go on a system: cmake --install, and the Debian package that ./package makes.

# tw_install_show(name root): the program of the show in the folder `root` with its launcher, data, desktop entry and
# manual page, as a component of the show's name. The data are the packed ones where the build packs them, else all of data/.
function(tw_install_show name root)
  set(pages ${root})
  if(root STREQUAL PROJECT_SOURCE_DIR)
    set(pages ${root}/show)
  endif()
  # The words about the show; each has a value to fall back on.
  set(about "{}")
  if(EXISTS ${pages}/about.json)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${pages}/about.json)
    file(READ ${pages}/about.json about)
  endif()
  set(fallback_title ${name})
  set(fallback_id show.tidewheel.${name}) # a name that no other program has, turned round as domains are
  set(fallback_summary "Real-time demo in OpenGL")
  set(fallback_description "An audiovisual show, drawn in real time in step with its music.")
  set(fallback_version 1.0)
  set(fallback_license LicenseRef-proprietary)
  foreach(word title id summary description version license)
    string(JSON SHOW_${word} ERROR_VARIABLE missing GET "${about}" ${word})
    if(missing OR SHOW_${word} STREQUAL "")
      set(SHOW_${word} ${fallback_${word}})
    endif()
    string(REPLACE "&" "&amp;" XML_${word} "${SHOW_${word}}")
    string(REPLACE "<" "&lt;" XML_${word} "${XML_${word}}")
  endforeach()
  set(SHOW_name ${name})

  set(texts ${CMAKE_CURRENT_BINARY_DIR}/install-${name})
  set(templates ${PROJECT_SOURCE_DIR}/scripts/packing/templates)
  foreach(file launcher show.desktop show.metainfo.xml show.1)
    configure_file(${templates}/${file} ${texts}/${file} @ONLY)
  endforeach()
  set(icon ${templates}/icon.png)
  if(EXISTS ${pages}/icon.png)
    set(icon ${pages}/icon.png)
  endif()

  set(of COMPONENT ${name})
  install(TARGETS show-${name} RUNTIME DESTINATION lib/${name} ${of})
  install(PROGRAMS $<TARGET_FILE:showdisplay> DESTINATION lib/${name} ${of})
  install(PROGRAMS ${texts}/launcher DESTINATION bin RENAME ${name} ${of})
  install(FILES ${root}/data/tidewheel.xml DESTINATION share/${name} ${of})
  install(FILES ${texts}/show.desktop DESTINATION share/applications RENAME ${name}.desktop ${of})
  install(FILES ${texts}/show.metainfo.xml DESTINATION share/metainfo RENAME ${name}.metainfo.xml ${of})
  install(FILES ${icon} DESTINATION share/icons/hicolor/128x128/apps RENAME ${name}.png ${of})
  find_program(GZIP gzip)
  install(CODE "
    set(page \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/share/man/man1/${name}.1.gz\")
    get_filename_component(folder \"\${page}\" DIRECTORY)
    file(MAKE_DIRECTORY \"\${folder}\")
    execute_process(COMMAND ${GZIP} -9nc \"${texts}/show.1\" OUTPUT_FILE \"\${page}\"
      COMMAND_ERROR_IS_FATAL ANY)" ${of})
  if(root STREQUAL PROJECT_SOURCE_DIR)
    # Where show/ puts it, which is read later than this.
    install(CODE "set(packed \"${PROJECT_SOURCE_DIR}/ourglacierheartcold.sdr\")" ${of})
  else()
    install(CODE "
      set(packed \"${texts}/${name}.sdr\")
      file(GLOB files RELATIVE \"${root}/data\" \"${root}/data/*\")
      execute_process(COMMAND \"${CMAKE_COMMAND}\" -E tar cf \"\${packed}\" --format=zip \${files}
        WORKING_DIRECTORY \"${root}/data\" COMMAND_ERROR_IS_FATAL ANY)" ${of})
  endif()
  install(CODE "
    file(INSTALL \"\${packed}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/share/${name}\" RENAME \"${name}.sdr\")" ${of})
endfunction()
