# The INI engine; included by includes/CMakeLists.txt.
target_sources(vykeldevenum_core PRIVATE
  ini/IniDocument.cpp
  ini/IniEdit.cpp
  ini/IniEscape.cpp
  ini/IniFile.cpp
  ini/IniLineReader.cpp
  ini/IniLoad.cpp
  ini/IniOutput.cpp
  ini/IniParser.cpp
  ini/IniSave.cpp
  ini/IniText.cpp
  ini/IniWriter.cpp)
