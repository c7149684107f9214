corvalent_test(tst_grabtext SOURCES tst_grabtext.cpp ../support/ScriptedDesktop.h LIBS corvalent_grab LABEL unit)
corvalent_test(tst_grabwindow SOURCES tst_grabwindow.cpp ../support/ScriptedDesktop.h
               LIBS corvalent_app corvalent_inprocess LABEL gui)
