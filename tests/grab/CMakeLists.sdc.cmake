# The Smart Data Collector: its rules without a screen, and its window on the offscreen platform.
corvalent_test(tst_smartdatacollector SOURCES tst_smartdatacollector.cpp LIBS corvalent_grab LABEL gui)
