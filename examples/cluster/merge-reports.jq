# The JSON of all shards as one report:
#
#   jq --null-input --raw-input --from-file merge-reports.jq shard-*.json >report.json
#
# A shard without a summary was killed: it is missing in "shards_ended", and the exit status of all is
# null. A line that it did not finish is passed over.
def total(key): map(select(.type == "summary") | .[key]) | add // 0;
[inputs | fromjson?] |
{
  shards: (map(select(.type == "plan") | .shard.count) | max),
  shards_ended: (map(select(.type == "summary")) | length),
  written: total("written"),
  failed: total("failed"),
  skipped: total("skipped"),
  exit_status: (if (map(select(.type == "plan")) | length) > (map(select(.type == "summary")) | length)
                then null else map(select(.type == "summary") | .exit_status) | max end),
  errors: (map(select(.type == "summary") | .errors[]) | unique),
  files: (map(select(.type == "file")) | sort_by(.name))
}
