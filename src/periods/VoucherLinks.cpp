// JustID2Code and JustIDs2CorBusType: from an adjustment-voucher line to its
// voucher code and to the business type of its transaction.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

String clsPub::JustID2Code(int32_t ID) {
  const detail::CallReads reads(dbia_);
  const String sql =
      u"SELECT cJVCode FROM JustInVouchs"
      u" WHERE AutoID=" +
      ToString(Variant(ID));
  auto rs = data::OpenKit(Database(), sql);
  // A line that is not there answers the code "0", which the forms test for.
  String code = u"0";
  if (rs->RecordCount() != 0) code = ToString(data::Column(*rs, u"cJVCode"));
  rs->Close();
  return code;
}

String clsPub::JustIDs2CorBusType(int32_t ID, bool IsCor) {
  const detail::CallReads reads(dbia_);
  // Through the receipt or dispatch voucher the adjustment line corresponds
  // to, or through the ledger entries the adjustment line produced.
  const String sql =
      IsCor ? u"SELECT RdRecord.cBusType FROM RdRecord INNER JOIN (RdRecords INNER JOIN "
              u"JustInVouchs ON RdRecords.AutoID=JustInVouchs.CorID) ON RdRecord.ID=RdRecords.ID "
              u"WHERE JustInVouchs.AutoID=" +
                  ToString(Variant(ID))
            : u"SELECT cBusType FROM IA_Subsidiary WHERE JustID=" + ToString(Variant(ID));
  auto rs = data::OpenKit(Database(), sql);
  String bus_type;
  if (!data::HoldsNoRow(*rs)) {
    rs->MoveLast();
    rs->MoveFirst();
    const Variant value = data::Column(*rs, u"cBusType");
    if (!value.IsNull()) bus_type = ToString(value);
  }
  rs->Close();
  return bus_type;
}

}  // namespace kavrin
