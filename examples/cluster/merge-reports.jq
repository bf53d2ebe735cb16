# The JSON of all shards as one report:
#
#   jq --slurp --from-file merge-reports.jq shard-*.json >report.json
#
# A shard without a summary was killed: it is missing in "shards_ended".
def total(key): map(select(.type == "summary") | .[key]) | add // 0;
{
  shards: (map(select(.type == "plan") | .shard.count) | max),
  shards_ended: (map(select(.type == "summary")) | length),
  written: total("written"),
  failed: total("failed"),
  skipped: total("skipped"),
  exit_status: (map(select(.type == "summary") | .exit_status) | max),
  files: (map(select(.type == "file")) | sort_by(.name))
}
