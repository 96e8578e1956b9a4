#pragma once

#include <string>
#include <vector>

#include "kpx/settings/document/ConfigDocument.h"
#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {

/// Which configurations of a file a verb works at, as the command line says it.
struct Selection {
  std::string className;  // --class: the class or the element
  int index = 0;          // --index: the number in the whole file, from 1

  bool none() const noexcept { return className.empty() && index == 0; }
};

/// Adds --class and --index to a verb.
void addSelection(OptionList& verb, Selection& selection);

/// The selection for the library. Raises a Failure (wrong usage) for a class whose objects are no
/// configurations.
ConfigurationChoice choiceOf(const Selection& selection);

/// The configurations of a file, or the defaults of a class.
struct Configurations {
  std::string source;  // as messages name it
  ConfigDocument document;
  std::vector<const ViewedConfiguration*> list;  // the selected ones, in the order of the document
  int count = 0;                                 // how many there are in the file

  const ConfigView& view() const noexcept { return document.view(); }
  std::string encoding() const { return asUtf8(encodingName(document.storage().codePage)); }
};

/// The class of the catalogue that a name of a class or of its element means; nullptr if none.
const SettingsClass* findClassOf(const std::string& name);

/// Reads what a name stands for: a class of the catalogue, "-", or a file. Raises a Failure when
/// the file is unreadable, ill-formed or holds no configuration that is selected.
Configurations readConfigurations(const std::string& fileOrClass, const Selection& selection = {});
Configurations configurationsOf(const Input& input, const Selection& selection = {});

/// A new object of the class as a document of its own. Raises a Failure (wrong usage) for a class
/// whose objects are no configurations.
ConfigDocument documentOfDefaults(const SettingsClass& settingsClass);

/// The name of a configuration as data: its class, or its element if the class is unknown.
std::string nameOf(const ViewedConfiguration& configuration);

/// The same as messages call it.
std::string labelOf(const ViewedConfiguration& configuration);
/// The same, with its number in a file that holds several: "CFGHeader (2)".
std::string labelOf(const Configurations& configurations, const ViewedConfiguration& configuration);

/// Places in a document where more than one is possible, for a message: "NAME (--index 2, line 17)"
/// one after the other. Places are added in the order of the document.
class CandidateList {
 public:
  explicit CandidateList(const ConfigDocument& document) : places_(document.text()) {}
  void add(const ViewedConfiguration& configuration, int offset);
  int count() const noexcept { return count_; }
  /// The places, and what tells them apart: "…; choose one with --class or --index".
  std::string sentence() const;

 private:
  static constexpr int mostPlaces = 10;
  struct Owner {
    std::string name;
    int number = 0;
    std::string lines;
    int places = 0;
  };

  PlaceCounter places_;
  std::vector<Owner> owners_;
  int count_ = 0;
};

}  // namespace kpx::tool
