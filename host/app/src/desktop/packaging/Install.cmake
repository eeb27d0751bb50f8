# Installing orvex: the program, its libraries, the wire type module, the add-on and its
# Scheme files together in lib/orvex (orvex finds its modules beside itself, and its
# libraries through $ORIGIN), a link in bin, the demo project, the documentation (which is
# also the help), a desktop entry and its icon. CPack makes a Debian package of the same.
set(ORVEX_LIBDIR lib/orvex)

function(orvex_install_program)
  set(targets orvex)
  foreach(target ovdb ovcore ovui zelplatform ZelPmProject ZelPmDefun ZelPmOleDb ZelWireTypeRes
                 ZelAddonLisp ZelWireType)
    if(TARGET ${target})
      list(APPEND targets ${target})
    endif()
  endforeach()
  set_target_properties(${targets} PROPERTIES INSTALL_RPATH "$ORIGIN")
  # Runs in the top folder, where ORVEX_LIBDIR is not set.
  install(TARGETS ${targets} RUNTIME DESTINATION lib/orvex LIBRARY DESTINATION lib/orvex)
endfunction()
# The module and the add-on are made in folders that come after this one.
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL orvex_install_program)

install(DIRECTORY ${CMAKE_BINARY_DIR}/bin/addon-lisp DESTINATION ${ORVEX_LIBDIR})
install(CODE "
  set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
  file(MAKE_DIRECTORY \"\${bin}\")
  file(CREATE_LINK ../${ORVEX_LIBDIR}/orvex \"\${bin}/orvex\" SYMBOLIC)
  message(STATUS \"Installing: \${bin}/orvex -> ../${ORVEX_LIBDIR}/orvex\")")

install(DIRECTORY ${CMAKE_BINARY_DIR}/samples/demo/ DESTINATION share/orvex/demo
        PATTERN "*.ovlock" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION share/doc/orvex)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/orvex.desktop DESTINATION share/applications)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/../icons/orvex.png
        DESTINATION share/icons/hicolor/256x256/apps)

set(CPACK_PACKAGE_NAME orvex)
set(CPACK_PACKAGE_VENDOR "Zel")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Orvex CAD host with the Zel electrical add-on and its wire type manager")
set(CPACK_PACKAGE_CONTACT "Zel wire types team <wiretypes@zel.invalid>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
# The program's own libraries live in lib/orvex; these are the system's.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libqt6widgets6, libqt6gui6, libqt6core6, qt6-qpa-plugins, guile-3.0-libs, libsqlite3-0")
include(CPack)
