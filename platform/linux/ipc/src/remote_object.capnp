# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

@0xd2f1c7a04be95e63;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("Host::Wire");

# A session between two processes is two connections (lanes), one for small parcels, one for large ones. Each end of each
# lane offers a Bootstrap. Objects are known by ids that the owning end gives out, the same on both lanes.

struct Entry {
  # Something that lies in a parcel at `position`.
  enum Kind {
    exported @0;    # an object of the sending end; `object` keeps it alive there
    home @1;        # an object of the receiving end, known to it by `id`
    descriptor @2;  # a file descriptor, attached to `object`
  }
  kind @0 :Kind;
  position @1 :UInt64;
  id @2 :UInt64;
  descriptor @3 :Text;
  object @4 :RemoteObject;
}

struct Parcel {
  values @0 :Data;
  block @1 :Data;
  entries @2 :List(Entry);
}

interface RemoteObject {
  sendRequest @0 (code :UInt32, flags :UInt32, parcel :Parcel)
      -> (result :Int32, parcel :Parcel, fetch :UInt64);
  # `fetch` other than 0: the reply is large, fetch it from the other lane with this ticket.
}

interface Bootstrap {
  join @0 (session :Data, lane :UInt16, device :Text);
  # The first call on a lane, from the end that connected: which session it belongs to.
  getAbility @1 (bundle :Text, ability :Text, user :Int32) -> (entry :Entry);
  resolve @2 (id :UInt64) -> (object :RemoteObject);
  # An object of this end that the caller already knows from the other lane.
  fetch @3 (ticket :UInt64) -> (parcel :Parcel);
}
