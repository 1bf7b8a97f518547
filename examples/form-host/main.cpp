// form-host: what an inventory entry form does with clsPub, from C++.
//
//   form-host DATABASE
//
// DATABASE is a suite database (create one with `kavrin init-db demo.db --demo`).
#include <kavrin/Convert.h>
#include <kavrin/Error.h>
#include <kavrin/clsPub.h>

#include <iostream>

using kavrin::FromUtf8;
using kavrin::ToUtf8;

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: form-host DATABASE\n";
    return 2;
  }
  try {
    kavrin::clsPub pub;
    pub.DBIA(kavrin::KitDatabase::Open(FromUtf8(argv[1])));

    // The user types 010101 into the inventory field: is it an item, and what is it called?
    const kavrin::String code = pub.CheckDirNoGrade(u"010101", 0);
    std::cout << "inventory code: " << ToUtf8(code) << "\n";
    std::cout << "name:           " << ToUtf8(pub.CodeToName(code, 0)) << "\n";
    std::cout << "unit price:     " << ToUtf8(pub.FormatNum(pub.InvCodeToUnitPrice(code))) << "\n";

    // A list entry "code   name" split back into its code; the entry is rewritten in place.
    kavrin::String entry = u"01             原料库";
    std::cout << "warehouse:      " << ToUtf8(pub.SepCode(entry)) << "\n";

    // Late binding: the same object called by name, as a script would.
    std::vector<kavrin::Variant> args{u"AA", u"cGoodClass"};
    std::cout << "class scheme:   " << ToUtf8(kavrin::ToString(pub.Call(u"GetAccInfo", args)))
              << "\n";

    // A failing call carries the platform's error number.
    pub.GetAccInfo(u"A'A", u"x");
  } catch (const kavrin::Error& e) {
    std::cout << "failed call:    error " << e.number() << ": " << ToUtf8(e.description()) << "\n";
  }
  return 0;
}
