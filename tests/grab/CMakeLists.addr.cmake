# Address recognition is plain text work: it is built from its own source so it does not wait on the rest of grab/.
corvalent_test(tst_addressrecognition
    SOURCES tst_addressrecognition.cpp ${CMAKE_SOURCE_DIR}/src/grab/AddressRecognition.cpp
    LIBS corvalent_common Qt6::Core
    LABEL unit)
