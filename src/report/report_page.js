// The report page: the device, its sensors and the sphere of directions in three.js, and the
// summary's numbers as tables. Writes a status line when the first frame is drawn.
(function () {
  'use strict';
  const data = kelvorigData;
  const summary = data.summary;
  const status = document.getElementById('kelvorig-status');

  function fixed(value, digits) {
    return value === null || value === undefined ? '' : Number(value).toFixed(digits);
  }

  function table(headings, rows) {
    const element = document.createElement('table');
    if (headings) {
      const head = element.insertRow();
      headings.forEach(function (text) {
        const cell = document.createElement('th');
        cell.textContent = text;
        head.appendChild(cell);
      });
    }
    rows.forEach(function (values) {
      const row = element.insertRow();
      values.forEach(function (text) { row.insertCell().textContent = text; });
    });
    return element;
  }

  function section(parent, title, element) {
    const heading = document.createElement('h2');
    heading.textContent = title;
    parent.appendChild(heading);
    parent.appendChild(element);
  }

  function showNumbers() {
    const numbers = document.getElementById('numbers');
    const inputs = summary.inputs;
    const solvable = summary.solvable_percent;
    const p = summary.position_error_mm;
    const r = summary.rotation_error_degrees;
    numbers.appendChild(table(null, [
      ['score (lower is better)', fixed(summary.score.value, 3) + ' / ' + summary.score.scale +
        ' at ' + summary.score.orientations + ' orientations'],
      ['sensors', String(inputs.sensor_count)],
      ['surface', inputs.sensors ? inputs.sensors + ' (' + inputs.unit + ')' : 'none'],
      ['distance, incidence limit, grid step', inputs.distance_m + ' m, ' + inputs.max_incidence_degrees +
        '°, ' + inputs.grid_step_degrees + '°'],
      ['solvable 100 / 99 / 96 / 0 %', [solvable['100'], solvable['99'], solvable['96'], solvable['0']]
        .map(function (v) { return fixed(v, 2); }).join(' / ') + ' % of directions'],
    ]));
    numbers.appendChild(table(['error', 'median', '90 %', '99 %', 'max'], [
      ['position (mm)', fixed(p.p50, 3), fixed(p.p90, 3), fixed(p.p99, 3), fixed(p.max, 3)],
      ['rotation (degrees)', fixed(r.p50, 3), fixed(r.p90, 3), fixed(r.p99, 3), fixed(r.max, 3)],
    ]));
    const legend = document.createElement('div');
    legend.id = 'legend';
    const stops = data.scale.stops.map(function (c) {
      return 'rgb(' + c.map(function (v) { return Math.round(v * 255); }).join(',') + ')';
    });
    const unsolvable = 'rgb(' + data.scale.unsolvable.map(function (v) { return Math.round(v * 255); }).join(',') + ')';
    legend.innerHTML = '<span>' + data.scale.lowMm + ' mm</span><span class="bar" style="background: linear-gradient(' +
      'to right, ' + stops.join(', ') + ')"></span><span>' + data.scale.highMm + '+ mm</span>' +
      '<span class="swatch" style="background: ' + unsolvable + '"></span><span>unsolvable</span>';
    numbers.appendChild(legend);
    const hint = document.createElement('p');
    hint.textContent = 'Drag to turn, wheel to zoom, right-drag to move. The sphere shows the position error ' +
      'with the base station in that direction (the near side faces you), on the scale above. ' +
      'Axes: red +X, green +Y, blue +Z; the blue arrow marks the front (+Z, yaw 0 of the map). ' +
      'Grey: obstacles; purple: keep-outs; red cones: sensors whose seat has a problem. ' +
      'Hover a sensor for its numbers.';
    numbers.appendChild(hint);

    const tables = document.getElementById('tables');
    section(tables, 'Sensors', table(['id', 'x (mm)', 'y (mm)', 'z (mm)', 'seen from (% of directions)',
      'depth under the hull (mm)', 'problems'],
      summary.sensors.map(function (s) {
        return [String(s.id), fixed(s.position_mm[0], 2), fixed(s.position_mm[1], 2), fixed(s.position_mm[2], 2),
          fixed(s.seen_percent, 1), fixed(s.hull_depth_mm, 2), (s.problems || []).join('; ')];
      })));
    const run = summary.run;
    const rules = run.seat_rules;
    section(tables, 'Run', table(null, [
      ['command line', 'kelvorig ' + run.command_line.join(' ')],
      ['version', run.version],
      ['seed, restarts', (run.seed === null ? 'none (from the time)' : String(run.seed)) + ', ' + run.restarts],
      ['anneal', run.iterations + ' iterations a sensor, cooling rate ' + run.cooling_rate + ', ' +
        summary.score.orientations + ' orientations'],
      ['seat rules', 'max seat depth ' + (rules.max_seat_depth_mm === null ? 'none' : rules.max_seat_depth_mm + ' mm') +
        ', min sensor spacing ' + (rules.min_sensor_spacing_mm === null ? 'none' : rules.min_sensor_spacing_mm +
        ' mm') + ', keep-outs: ' + (rules.keep_outs.join(', ') || 'none')],
      ['obstacles', inputs.obstacles.join(', ') || 'none'],
    ]));
    section(tables, 'Worst regions of directions (each by its worst direction)', table(
      ['yaw (°)', 'pitch (°)', 'sensors seen', 'solvable %', 'position error (mm)', 'rotation error (°)',
        'region (% of directions)'],
      summary.worst_directions.map(function (d) {
        return [fixed(d.yaw_degrees, 1), fixed(d.pitch_degrees, 1), String(d.visible_sensors),
          String(d.solvable_percent), fixed(d.position_error_mm, 3), fixed(d.rotation_error_degrees, 3),
          fixed(d.region_share_percent, 2)];
      })));
  }

  function errorColour(errorMm) {
    const scale = data.scale;
    if (errorMm < 0) return scale.unsolvable;
    const low = Math.log10(scale.lowMm);
    const high = Math.log10(scale.highMm);
    let t = (Math.log10(Math.max(errorMm, scale.lowMm)) - low) / (high - low);
    t = Math.min(1, Math.max(0, t)) * (scale.stops.length - 1);
    const stop = Math.min(Math.floor(t), scale.stops.length - 2);
    const a = scale.stops[stop];
    const b = scale.stops[stop + 1];
    const f = t - stop;
    return [a[0] + (b[0] - a[0]) * f, a[1] + (b[1] - a[1]) * f, a[2] + (b[2] - a[2]) * f];
  }

  function direction(yawDegrees, pitchDegrees) {
    const yaw = yawDegrees * Math.PI / 180;
    const pitch = pitchDegrees * Math.PI / 180;
    return new THREE.Vector3(Math.sin(yaw) * Math.cos(pitch), Math.sin(pitch), Math.cos(yaw) * Math.cos(pitch));
  }

  // The grid's rows stop short of the north pole and its columns short of yaw 180: the top row
  // is carried to the pole, and the last column joins the first (yaw -180 is yaw 180).
  function sphereOfDirections(radius) {
    const sphere = data.sphere;
    const rows = sphere.pitches.length;
    const pitches = sphere.pitches[rows - 1] < 90 ? sphere.pitches.concat([90]) : sphere.pitches;
    const n = pitches.length;
    const positions = [];
    const colours = [];
    sphere.yaws.forEach(function (yaw, i) {
      pitches.forEach(function (pitch, j) {
        const v = direction(yaw, pitch).multiplyScalar(radius);
        positions.push(v.x, v.y, v.z);
        const c = errorColour(sphere.errors[i * rows + Math.min(j, rows - 1)]);
        colours.push(c[0], c[1], c[2]);
      });
    });
    const indices = [];
    for (let i = 0; i < sphere.yaws.length; ++i) {
      for (let j = 0; j + 1 < n; ++j) {
        const a = i * n + j;
        const b = ((i + 1) % sphere.yaws.length) * n + j;
        indices.push(a, a + 1, b, b, a + 1, b + 1);
      }
    }
    const geometry = new THREE.BufferGeometry();
    geometry.setAttribute('position', new THREE.Float32BufferAttribute(positions, 3));
    geometry.setAttribute('color', new THREE.Float32BufferAttribute(colours, 3));
    geometry.setIndex(indices);
    const material = new THREE.MeshBasicMaterial({
      vertexColors: THREE.VertexColors, transparent: true, opacity: 0.8, depthWrite: false });
    return new THREE.Mesh(geometry, material);
  }

  function numberSprite(text, size) {
    const canvas = document.createElement('canvas');
    canvas.width = 64;
    canvas.height = 64;
    const context = canvas.getContext('2d');
    context.fillStyle = 'rgba(255,255,255,0.85)';
    context.beginPath();
    context.arc(32, 32, 30, 0, 2 * Math.PI);
    context.fill();
    context.fillStyle = '#000';
    context.font = 'bold ' + (text.length > 3 ? 18 : 34) + 'px sans-serif';
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    context.fillText(text, 32, 34);
    // Hidden where the device stands in front of it, so that back-side labels stay behind.
    const sprite = new THREE.Sprite(new THREE.SpriteMaterial({ map: new THREE.CanvasTexture(canvas) }));
    sprite.scale.set(size, size, 1);
    return sprite;
  }

  function showScene() {
    const view = document.getElementById('view');
    const renderer = new THREE.WebGLRenderer({ antialias: true, preserveDrawingBuffer: true });
    renderer.setPixelRatio(window.devicePixelRatio || 1);
    renderer.setSize(view.clientWidth, view.clientHeight);
    renderer.setClearColor(0xf4f4f4);
    view.insertBefore(renderer.domElement, view.firstChild);

    const scene = new THREE.Scene();
    scene.add(new THREE.AmbientLight(0xffffff, 0.45));
    const light = new THREE.DirectionalLight(0xffffff, 0.7);
    scene.add(light);

    const sensors = summary.sensors;
    // The view frames the device wherever it sits: the box of the mesh and the sensors.
    const bounds = new THREE.Box3();
    sensors.forEach(function (s) { bounds.expandByPoint(new THREE.Vector3().fromArray(s.position_mm)); });
    let triangles = 0;
    if (data.mesh.length > 0) {
      const geometry = new THREE.BufferGeometry();
      geometry.setAttribute('position', new THREE.Float32BufferAttribute(data.mesh, 3));
      geometry.computeVertexNormals();
      geometry.computeBoundingBox();
      bounds.union(geometry.boundingBox);
      const device = new THREE.Mesh(geometry, new THREE.MeshPhongMaterial({ color: 0xe0a060, side: THREE.DoubleSide }));
      device.name = 'device';
      scene.add(device);
      triangles = data.mesh.length / 9;
    }
    const centre = bounds.isEmpty() ? new THREE.Vector3() : bounds.getCenter(new THREE.Vector3());
    const radius = Math.max(bounds.isEmpty() ? 0 : bounds.getSize(new THREE.Vector3()).length() / 2, 1);
    [['obstacles', data.obstacles, 0x808080, 0.35], ['keep-outs', data.keepOuts, 0x8040c0, 0.3]].forEach(
      function (entry) {
        if (entry[1].length === 0) return;
        const geometry = new THREE.BufferGeometry();
        geometry.setAttribute('position', new THREE.Float32BufferAttribute(entry[1], 3));
        geometry.computeVertexNormals();
        const mesh = new THREE.Mesh(geometry, new THREE.MeshPhongMaterial({ color: entry[2], transparent: true,
          opacity: entry[3], depthWrite: false, side: THREE.DoubleSide }));
        mesh.name = entry[0];
        scene.add(mesh);
      });

    const markerSize = radius * 0.045;
    const markers = [];
    const markerGeometry = new THREE.ConeBufferGeometry(markerSize * 0.5, markerSize * 1.6, 12);
    markerGeometry.translate(0, markerSize * 0.8, 0);
    sensors.forEach(function (s, index) {
      const position = new THREE.Vector3().fromArray(s.position_mm);
      const normal = new THREE.Vector3().fromArray(data.normals[index]);
      if (normal.lengthSq() > 0) normal.normalize(); else normal.set(0, 1, 0);
      const flagged = s.problems && s.problems.length > 0;
      const marker = new THREE.Mesh(markerGeometry, new THREE.MeshPhongMaterial({ color: flagged ? 0xd7191c : 0x1a9641 }));
      marker.position.copy(position);
      marker.quaternion.setFromUnitVectors(new THREE.Vector3(0, 1, 0), normal);
      marker.userData = s;
      scene.add(marker);
      markers.push(marker);
      const label = numberSprite(String(s.id), markerSize * 1.6);
      label.position.copy(position).addScaledVector(normal, markerSize * 2.6);
      scene.add(label);
    });

    // The mesh's axes at the device's centre, and its front (+Z: yaw 0 of the map) marked.
    const axes = new THREE.AxesHelper(radius * 0.9);
    axes.name = 'axes';
    axes.position.copy(centre);
    scene.add(axes);
    [['+X', 1, 0, 0], ['+Y', 0, 1, 0], ['+Z', 0, 0, 1]].forEach(function (axis) {
      const label = numberSprite(axis[0], markerSize * 2.2);
      label.position.copy(centre).add(new THREE.Vector3(axis[1], axis[2], axis[3]).multiplyScalar(radius * 1.0));
      scene.add(label);
    });
    const front = new THREE.ArrowHelper(new THREE.Vector3(0, 0, 1), centre, radius * 1.35, 0x2060d0,
      radius * 0.12, radius * 0.06);
    front.name = 'front marker';
    scene.add(front);
    const frontLabel = numberSprite('front', markerSize * 3.0);
    frontLabel.position.copy(centre).add(new THREE.Vector3(0, 0, radius * 1.45));
    scene.add(frontLabel);

    let sphereDirections = 0;
    if (data.sphere) {
      const sphere = sphereOfDirections(radius * 1.5);
      sphere.name = 'sphere of directions';
      sphere.position.copy(centre);
      scene.add(sphere);
      sphereDirections = data.sphere.yaws.length * data.sphere.pitches.length;
      const toggle = document.createElement('label');
      toggle.innerHTML = '<input type="checkbox" checked> sphere of directions';
      toggle.firstChild.addEventListener('change', function (event) {
        sphere.visible = event.target.checked;
        render();
      });
      document.getElementById('numbers').appendChild(toggle);
    }

    const camera = new THREE.PerspectiveCamera(40, view.clientWidth / view.clientHeight, radius * 0.01, radius * 50);
    camera.position.copy(centre).add(new THREE.Vector3(radius * 2.6, radius * 1.8, radius * 5.0));
    const controls = new THREE.OrbitControls(camera, renderer.domElement);
    controls.target.copy(centre);
    controls.update();

    const tooltip = document.getElementById('tooltip');
    const raycaster = new THREE.Raycaster();
    renderer.domElement.addEventListener('mousemove', function (event) {
      const box = renderer.domElement.getBoundingClientRect();
      const pointer = new THREE.Vector2((event.clientX - box.left) / box.width * 2 - 1,
        -(event.clientY - box.top) / box.height * 2 + 1);
      raycaster.setFromCamera(pointer, camera);
      const hits = raycaster.intersectObjects(markers);
      if (hits.length === 0) {
        tooltip.style.display = 'none';
        return;
      }
      const s = hits[0].object.userData;
      tooltip.textContent = 'sensor ' + s.id + ': (' + s.position_mm.map(function (v) { return fixed(v, 2); })
        .join(', ') + ') mm, seen from ' + fixed(s.seen_percent, 1) + ' % of directions' +
        (s.problems && s.problems.length > 0 ? '; ' + s.problems.join('; ') : '');
      tooltip.style.left = (event.clientX - box.left + 14) + 'px';
      tooltip.style.top = (event.clientY - box.top + 14) + 'px';
      tooltip.style.display = 'block';
    });

    function render() {
      light.position.copy(camera.position);
      renderer.render(scene, camera);
    }
    controls.addEventListener('change', render);
    render();
    const drawn = ['device', 'axes', 'front marker', 'obstacles', 'keep-outs', 'sphere of directions'].filter(
      function (name) { return scene.getObjectByName(name) !== undefined; });
    const flagged = markers.filter(function (m) { return m.userData.problems && m.userData.problems.length > 0; });
    document.getElementById('kelvorig-scene').textContent = 'scene: ' + drawn.join(', ') + '; ' + flagged.length +
      ' flagged sensors (' + flagged.map(function (m) { return m.userData.id; }).join(' ') + ')';
    status.textContent = 'ready: ' + triangles + ' mesh triangles, ' + markers.length + ' sensors, ' +
      sphereDirections + ' sphere directions, ' + renderer.info.render.triangles + ' triangles drawn';
  }

  showNumbers();
  try {
    showScene();
  } catch (error) {
    status.textContent = 'the 3D view could not be shown: ' + error.message;
    throw error;
  }
})();
