; (layer-report file): a line for each layer with its colour, linetype, state and number of entities.

(defun pad (text width)
  (while (< (strlen text) width) (setq text (strcat text " ")))
  text)

(defun layer-count (name / set)
  (setq set (ssget "X" (list (cons 8 name))))
  (if set (sslength set) 0))

(defun layer-report (path / file layer name state total)
  (setq file (open path "w") total 0)
  (if (null file)
    (strcat "Cannot write " path)
    (progn
      (write-line (strcat (pad "Layer" 20) (pad "Colour" 8) (pad "Linetype" 14) (pad "State" 10) "Entities") file)
      (setq layer (tblnext "LAYER" T))
      (while layer
        (setq name (cdr (assoc 2 layer))
              state (cond ((minusp (cdr (assoc 62 layer))) "off")
                          ((= 1 (logand 1 (cdr (assoc 70 layer)))) "frozen")
                          ((= 4 (logand 4 (cdr (assoc 70 layer)))) "locked")
                          (T "on"))
              total (1+ total))
        (write-line (strcat (pad name 20) (pad (itoa (abs (cdr (assoc 62 layer)))) 8) (pad (cdr (assoc 6 layer)) 14)
                            (pad state 10) (itoa (layer-count name)))
                    file)
        (setq layer (tblnext "LAYER")))
      (close file)
      (strcat (itoa total) " layers written to " path))))
