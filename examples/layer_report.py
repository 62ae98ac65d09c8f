"""What stands on which layer: kovacad-cli run --open plan.dxf -c "PYSCRIPT examples/layer_report.py" """

from collections import Counter

from kova.doc import current

counts = Counter((entity.layer_name, entity.kind) for entity in current().model_space)
for layer in current().drawing.layers.values():
    state = "off" if not layer.on else "frozen" if layer.frozen else "on"
    kinds = ", ".join(f"{count} {kind}" for (name, kind), count in sorted(counts.items()) if name == layer.name)
    print(f"{layer.name} ({state}): {kinds or 'nothing'}")
